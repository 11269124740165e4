// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "client/FaceLink.h"
#include "client/RemoteObject.h"

namespace velmora {

/// Between one of the application's small objects and its mirror here: the values come in, the mirror's
/// requests go out.
class ObjectLink : public FaceLink {
    Q_OBJECT
public:
    /// `mirror` must outlive it.
    ObjectLink(const QDBusConnection& bus, const Face& face, RemoteObject& mirror, QObject* parent = nullptr);
};

} // namespace velmora
