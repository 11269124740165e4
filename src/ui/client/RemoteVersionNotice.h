// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/RemoteObject.h"

namespace velmora {

/// The notice over the dashboard: wire::face::notice, as far as views show it.
class RemoteVersionNotice : public velmora::RemoteObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(VersionNotice)
    QML_SINGLETON
    static constexpr const auto& table = wire::face::notice::properties;
    VELMORA_MIRRORED(bool, showMacOS264Banner)
public:
    explicit RemoteVersionNotice(QObject* parent = nullptr) : RemoteObject(wire::face::notice::face, parent)
    {
    }

    /// The main window has appeared.
    Q_INVOKABLE void appeared();
    /// A person has answered the notice.
    Q_INVOKABLE void dismissed();
    /// The notice is gone from the window, however it went. Here that holds at once, so that no news on its
    /// way brings it back.
    Q_INVOKABLE void closed();
};

} // namespace velmora
