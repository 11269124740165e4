// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>
#include <optional>

// After the others: moc 6.4 cannot read <compare> as the first header of the standard library.
#include "client/RemoteModel.h"
#include "history/HistoryTrends.h"

namespace velmora {

/// The model's history for the history pages: a range to plot, and statements on all of it. Asks for newer
/// samples from time to time while it exists.
class Trends : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(velmora::RemoteModel* battery READ battery WRITE setBattery NOTIFY changed)
    Q_PROPERTY(QString range READ range WRITE setRange NOTIFY changed) ///< one of `ranges`
    Q_PROPERTY(QStringList ranges READ ranges CONSTANT)                ///< in the reader's language
    Q_PROPERTY(bool empty READ isEmpty NOTIFY changed)                 ///< nothing in this range
    Q_PROPERTY(QString emptyText READ emptyText NOTIFY changed) ///< says what is there, or when it comes
    Q_PROPERTY(QString summary READ summary NOTIFY changed)     ///< how many samples of which time
    Q_PROPERTY(QString health READ health NOTIFY changed)
    Q_PROPERTY(QString rate READ rate NOTIFY changed)     ///< from first to last sample
    Q_PROPERTY(QString fitted READ fitted NOTIFY changed) ///< of the line through all
    Q_PROPERTY(QString forecast READ forecast NOTIFY changed)
    Q_PROPERTY(QString forecastDetail READ forecastDetail NOTIFY changed)
    /// Each a map of `title`, `message` and `severity` ("optimal", "warning" or "critical").
    Q_PROPERTY(QVariantList insights READ insights NOTIFY changed)
    /// Each thermal state: a map of `name`, `color` (of `Theme.color`) and `share`, a text.
    Q_PROPERTY(QVariantList shares READ shares NOTIFY changed)
public:
    explicit Trends(QObject* parent = nullptr);

    RemoteModel* battery() const { return battery_; }
    void setBattery(RemoteModel* battery);
    QString range() const;
    void setRange(const QString& name);
    QStringList ranges() const;

    bool isEmpty() const { return window_.samples.empty(); }
    QString emptyText() const;
    QString summary() const;
    QString health() const { return QString::fromStdString(trends::healthText(samples_)); }
    QString rate() const;
    QString fitted() const { return QString::fromStdString(trends::fitText(fit_)); }
    QString forecast() const { return QString::fromStdString(forecast_.headline); }
    QString forecastDetail() const { return QString::fromStdString(forecast_.detail); }
    QVariantList insights() const { return insights_; }
    QVariantList shares() const;

    /// "12 Nov, 14:05: 98.4% health, 72% charged, Nominal"
    QString readOut(const HSHistorySnapshot& sample) const;

    /// Writes the range's samples into a new file in the user's documents; returns the message for the user.
    Q_INVOKABLE QString saveCsv() const;
    /// The path of a new file in the user's pictures folder.
    Q_INVOKABLE static QString pictureFile(const QString& name);

    const trends::Window& window() const { return window_; }
    const trends::Scale& healthScale() const { return healthScale_; }
    const std::optional<trends::Fit>& fit() const { return fit_; }
    const std::vector<trends::Band>& bands() const { return bands_; }

Q_SIGNALS:
    void changed();

private:
    void refresh();
    void workOut();
    void workOutRange();
    QString momentText(Date date) const;

    RemoteModel* battery_ = nullptr;
    trends::Range range_ = trends::Range::all;
    trends::Samples samples_; ///< all that are usable
    std::optional<trends::Fit> fit_;
    trends::Forecast forecast_;
    QVariantList insights_;
    trends::Window window_{};
    std::vector<trends::Band> bands_;
    trends::Scale healthScale_{};
    QTimer refreshing_;
};

} // namespace velmora
