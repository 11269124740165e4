// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "desktop/Layers.h"

#include <QWindow>

#ifdef VELMORA_LAYER_SHELL
#include "base/Handle.h"

#include <LayerShellQt/window.h>
#include <cstring>
#include <wayland-client.h>
#endif

namespace velmora::layers {

namespace {

bool isUsed = false;

} // namespace

void use()
{
    isUsed = true;
}

bool areUsed()
{
    return isUsed;
}

#ifdef VELMORA_LAYER_SHELL

namespace {

using LayerWindow = LayerShellQt::Window;

/// The compositor names all that it offers as soon as it is asked.
constexpr wl_registry_listener registryListener{
    .global =
        [](void* isThere, wl_registry*, std::uint32_t, const char* interface, std::uint32_t) {
            if (std::strcmp(interface, "zwlr_layer_shell_v1") == 0) *static_cast<bool*>(isThere) = true;
        },
    .global_remove = [](void*, wl_registry*, std::uint32_t) {},
};

LayerWindow::Anchors anchorsAt(Qt::Edges edges)
{
    LayerWindow::Anchors anchors;
    anchors.setFlag(LayerWindow::AnchorTop, edges.testFlag(Qt::TopEdge));
    anchors.setFlag(LayerWindow::AnchorBottom, edges.testFlag(Qt::BottomEdge));
    anchors.setFlag(LayerWindow::AnchorLeft, edges.testFlag(Qt::LeftEdge));
    anchors.setFlag(LayerWindow::AnchorRight, edges.testFlag(Qt::RightEdge));
    return anchors;
}

} // namespace

bool areOffered()
{
    if (qEnvironmentVariableIsSet("WAYLAND_SOCKET")) return false; // a connection that only Qt may use
    const Handle<wl_display, wl_display_disconnect> display(wl_display_connect(nullptr));
    if (!display) return false;
    const Handle<wl_registry, wl_registry_destroy> registry(wl_display_get_registry(display.get()));
    bool isThere = false;
    wl_registry_add_listener(registry.get(), &registryListener, &isThere);
    return wl_display_roundtrip(display.get()) >= 0 && isThere;
}

void put(QWindow& window, const Place& place)
{
    auto* surface = LayerWindow::get(&window);
    surface->setScope(QStringLiteral("velmora"));
    surface->setKeyboardInteractivity(LayerWindow::KeyboardInteractivityOnDemand);
    surface->setAnchors(anchorsAt(place.edges));
    surface->setMargins(place.margins);
}

void setAbove(QWindow& window, bool isAbove)
{
    LayerWindow::get(&window)->setLayer(isAbove ? LayerWindow::LayerTop : LayerWindow::LayerBottom);
}

/// Compositors give the keyboard to a surface that opens only where it wants all of it.
void takeKeyboard(QWindow& window)
{
    LayerWindow::get(&window)->setKeyboardInteractivity(LayerWindow::KeyboardInteractivityExclusive);
    QObject::connect(
        &window, &QWindow::activeChanged, &window,
        [&window] {
            LayerWindow::get(&window)->setKeyboardInteractivity(LayerWindow::KeyboardInteractivityOnDemand);
        },
        Qt::SingleShotConnection);
}

#else

bool areOffered()
{
    return false;
}

void put(QWindow&, const Place&) {}

void setAbove(QWindow&, bool) {}

void takeKeyboard(QWindow&) {}

#endif

} // namespace velmora::layers
