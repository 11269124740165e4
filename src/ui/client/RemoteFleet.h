// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/FleetList.h"
#include "client/RemoteObject.h"

#include <QString>
#include <QVariantMap>
#include <functional>
#include <vector>

#include "fleet/DeviceReport.h"
#include "platform/RecordStores.h"

namespace velmora {

/// The fleet of the user's machines: wire::face::fleet, and what that says in words.
class RemoteFleet : public velmora::RemoteObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(EcosystemSync)
    QML_SINGLETON
    static constexpr const auto& table = wire::face::fleet::properties;
    VELMORA_MIRRORED(bool, isOn)
    VELMORA_MIRRORED(bool, acceptsCommands)
    VELMORA_MIRRORED(bool, isTesting)
    VELMORA_MIRRORED(bool, isLeaving)
    VELMORA_MIRRORED(QString, deviceID)
    VELMORA_MIRRORED(QString, deviceName)
    /// Where the records live, by the wire's keys.
    Q_PROPERTY(QVariantMap place READ place NOTIFY changed)
    Q_PROPERTY(QString placeText READ placeText NOTIFY changed)
    Q_PROPERTY(QString problemText READ problemText NOTIFY changed) ///< empty: there is none
    /// After this machine has left, where its record could not be removed; empty else.
    Q_PROPERTY(QString leftText READ leftText NOTIFY changed)
    Q_PROPERTY(QString listEndText READ listEndText NOTIFY listed) ///< what the list does not show
    Q_PROPERTY(QString lastSync READ lastSync NOTIFY changed)      ///< empty: never
    /// Rows as FleetList has them, texts all.
    Q_PROPERTY(QAbstractListModel* devices READ devices CONSTANT)
    Q_PROPERTY(int listings READ listings NOTIFY listed) ///< how often `device` may have changed
public:
    explicit RemoteFleet(QObject* parent = nullptr);

    /// What time it is for those who look at the fleet.
    void setClock(std::function<Date()> now) { now_ = std::move(now); }

    Q_INVOKABLE void turnOn() { ask(wire::face::fleet::turnOn); }
    Q_INVOKABLE void leave() { ask(wire::face::fleet::leave); }
    /// Lists the devices anew, and tells the age of what is known.
    Q_INVOKABLE void refresh();

    /// What keeps a place from being tried or used, and what a test of one of its kind has found; empty:
    /// nothing.
    Q_INVOKABLE QString missingText(const QVariantMap& place) const;
    Q_INVOKABLE QString testText(const QVariantMap& place) const;
    /// With an empty password the one that is kept is meant.
    Q_INVOKABLE void use(const QVariantMap& place, const QString& password);
    Q_INVOKABLE void test(const QVariantMap& place, const QString& password);

    /// A device of the list, for a page that shows one: see RemoteFleet.cpp for the keys. Empty where it is
    /// none.
    Q_INVOKABLE QVariantMap device(const QString& identifier) const;
    Q_INVOKABLE void command(const QString& identifier, double limit, bool isAutoProtectOn,
                             bool isStorageModeOn);
    Q_INVOKABLE void remove(const QString& identifier);

    QVariantMap place() const;
    QString placeText() const;
    QString problemText() const;
    QString leftText() const;
    QString listEndText() const;
    QString lastSync() const;
    QAbstractListModel* devices() { return &list_; }
    int listings() const { return listings_; }

Q_SIGNALS:
    void listed();

protected:
    void take(std::size_t row, const QVariant& value) override;

private:
    void ask(const char* operation) { Q_EMIT operationWanted(QString::fromLatin1(operation)); }
    void ask(const char* operation, const KeyedArchive& record);
    void askWithPlace(const char* operation, const QVariantMap& place, const QString& password);
    FleetList::Row rowOf(const DeviceReport& report) const;
    void show();
    RecordPlace recordPlace() const;

    std::function<Date()> now_;
    std::vector<DeviceReport> reports_;
    FleetList list_;
    int listings_ = 0;
};

} // namespace velmora
