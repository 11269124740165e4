// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "history/Trends.h"

#include "base/Saturate.h"
#include "base/Translation.h"
#include "client/QtText.h"
#include "texts/PanelTexts.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QLocale>
#include <QSaveFile>
#include <QStandardPaths>
#include <algorithm>
#include <chrono>

namespace velmora {

namespace {

constexpr std::chrono::minutes refreshInterval{5};

QDateTime local(Date date)
{
    return QDateTime::fromSecsSinceEpoch(truncated(date.unixSeconds()));
}

/// A path in this folder at which there is no file yet.
QString newFile(QStandardPaths::StandardLocation place, const QString& name, const QString& ending)
{
    const QDir folder(QStandardPaths::writableLocation(place));
    folder.mkpath(QStringLiteral("."));
    const auto stem = name + QDateTime::currentDateTime().toString(QStringLiteral(" yyyy-MM-dd"));
    auto path = folder.filePath(stem + ending);
    for (int number = 2; QFile::exists(path); ++number)
        path = folder.filePath(QStringLiteral("%1 (%2)%3").arg(stem, QString::number(number), ending));
    return path;
}

QString heatText(const HSHistorySnapshot& sample)
{
    const auto state = ThermalMonitorService::thermalStateFromRawValue(sample.thermalState);
    return text(panel::thermalText(state.value_or(ThermalMonitorService::ThermalState::nominal)));
}

QString severityName(PredictionEngine::InsightSeverity severity)
{
    using enum PredictionEngine::InsightSeverity;
    return severity == optimal   ? QStringLiteral("optimal")
           : severity == warning ? QStringLiteral("warning")
                                 : QStringLiteral("critical");
}

QVariantList cards(const trends::Samples& samples)
{
    QVariantList cards;
    for (const auto& insight : PredictionEngine::generateInsights(samples))
        cards.append(QVariantMap{{"title", text(insight.title)},
                                 {"message", text(insight.message)},
                                 {"severity", severityName(insight.severity)}});
    return cards;
}

} // namespace

Trends::Trends(QObject* parent) : QObject(parent)
{
    workOut();
    refreshing_.setTimerType(Qt::VeryCoarseTimer);
    connect(&refreshing_, &QTimer::timeout, this, &Trends::refresh);
    refreshing_.start(refreshInterval);
}

void Trends::setBattery(RemoteModel* battery)
{
    if (battery == battery_) return;
    if (battery_) battery_->disconnect(this);
    battery_ = battery;
    if (battery_) connect(battery_, &RemoteModel::historyChanged, this, &Trends::workOut);
    refresh();
}

void Trends::refresh()
{
    if (battery_) battery_->fetchHistory();
    workOut(); // the ranges end now
}

QString Trends::range() const
{
    return ranges().at(static_cast<qsizetype>(range_));
}

void Trends::setRange(const QString& name)
{
    const auto found = ranges().indexOf(name);
    if (found < 0) return;
    range_ = static_cast<trends::Range>(found);
    workOutRange();
}

QStringList Trends::ranges() const
{
    QStringList names;
    for (const auto* name : trends::rangeNames) names << text(velmora::tr(name));
    return names;
}

void Trends::workOut()
{
    samples_ = battery_ ? trends::usable(battery_->history(), battery_->now()) : trends::Samples{};
    fit_ = trends::fit(samples_);
    forecast_ = trends::forecast(samples_, fit_);
    insights_ = cards(samples_);
    workOutRange();
}

void Trends::workOutRange()
{
    window_ = trends::window(samples_, range_, battery_ ? battery_->now() : Date{});
    bands_ = trends::bands(samples_, window_);
    healthScale_ = trends::healthScale(window_.samples);
    Q_EMIT changed();
}

QString Trends::emptyText() const
{
    if (samples_.empty()) return battery_ ? battery_->firstSampleText() : QString();
    return tr("No samples in this range. The newest is from %1.").arg(momentText(samples_.back().timestamp));
}

/// With its year where that is not this one.
QString Trends::momentText(Date date) const
{
    const auto moment = local(date);
    const bool isThisYear = battery_ && moment.date().year() == local(battery_->now()).date().year();
    const auto format = isThisYear ? QStringLiteral("d MMM, HH:mm") : QStringLiteral("d MMM yyyy, HH:mm");
    return QLocale::c().toString(moment, format);
}

QString Trends::summary() const
{
    if (isEmpty()) return tr("No samples");
    const auto& shown = window_.samples;
    const auto first = momentText(shown.front().timestamp);
    const auto last = momentText(shown.back().timestamp);
    return text(trn("%1 sample, %2", "%1 samples, %2 to %3", static_cast<std::int64_t>(shown.size()),
                    first.toStdString(), last.toStdString()));
}

QString Trends::rate() const
{
    return text(trends::rateText(PredictionEngine::degradationRatePerMonth(samples_)));
}

QVariantList Trends::shares() const
{
    QVariantList list;
    const auto shares = trends::shares(bands_);
    for (std::size_t i = 0; i < shares.size(); ++i) {
        const auto state = static_cast<trends::ThermalState>(i);
        const auto share = bands_.empty() ? QStringLiteral("–") : text(trends::shareText(shares[i]));
        list.append(QVariantMap{{"name", text(panel::thermalText(state))},
                                {"color", text(panel::name(panel::thermalColor(state)))},
                                {"share", share}});
    }
    return list;
}

QString Trends::readOut(const HSHistorySnapshot& sample) const
{
    return tr("%1: %2 health, %3 charged, %4")
        .arg(momentText(sample.timestamp), text(trends::healthText({sample})),
             text(panel::percentageText(sample.percentage)), heatText(sample));
}

QString Trends::saveCsv() const
{
    const auto path = newFile(QStandardPaths::DocumentsLocation, tr("Battery history"), ".csv");
    QSaveFile file(path);
    const auto bytes = QByteArray::fromStdString(trends::csv(window_.samples));
    const bool isSaved =
        file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    return isSaved ? tr("Saved as %1").arg(path) : tr("Cannot write %1: %2").arg(path, file.errorString());
}

QString Trends::pictureFile(const QString& name)
{
    return newFile(QStandardPaths::PicturesLocation, name, ".png");
}

} // namespace velmora
