#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes SymbolPaths.h from the Phosphor icons; run by hand when a symbol is added:

    npm install @phosphor-icons/core@2.1.1      (anywhere)
    make-symbols.py node_modules/@phosphor-icons/core > SymbolPaths.h
"""
import pathlib
import re
import sys

# Every icon is one path in a box of 256. Weight "fill" unless said.
ICONS = {
    "lightning": "fill", "lightning-slash": "fill", "shield": "fill", "heart": "fill",
    "thermometer-simple": "fill", "gear": "fill", "power": "bold", "chart-bar": "fill", "vibrate": "fill",
    "sliders-horizontal": "fill", "bell": "fill", "check-circle": "fill", "circle": "regular",
    "brain": "fill", "calendar-check": "fill", "chart-line": "bold", "arrows-clockwise": "bold",
}

# Drawn here, in the same box and with the same roundings.
OWN = {
    "disc": "M128,0A128,128,0,1,1,128,256A128,128,0,1,1,128,0Z",
    "squares-over-slider":
        "M40,28H100A16,16,0,0,1,116,44V104A16,16,0,0,1,100,120H40A16,16,0,0,1,24,104V44A16,16,0,0,1,40,28Z"
        "M40,44V104H100V44Z"
        "M156,28H216A16,16,0,0,1,232,44V104A16,16,0,0,1,216,120H156A16,16,0,0,1,140,104V44A16,16,0,0,1,156,28Z"
        "M32,176H115A8,8,0,0,1,115,192H32A8,8,0,0,1,32,176ZM197,176H224A8,8,0,0,1,224,192H197A8,8,0,0,1,197,176Z"
        "M156,156A28,28,0,1,1,156,212A28,28,0,1,1,156,156Z",
}

# Symbol -> layers, bottom first: icon, and for composed ones scale, centre and whether it cuts a hole.
SYMBOLS = {
    "arrow.triangle.2.circlepath": ["arrows-clockwise"],
    "bell.badge.fill": ["bell", ("disc", 48 / 128, 192, 56, "cuts"), ("disc", 34 / 128, 192, 56)],
    "bolt.fill": ["lightning"],
    "bolt.heart.fill": ["heart", ("lightning", 0.44, 128, 130, "cuts")],
    "bolt.ring.closed": [("disc", 112 / 128, 128, 128), ("disc", 92 / 128, 128, 128, "cuts"),
                         ("lightning", 0.56, 128, 128)],
    "bolt.shield.fill": ["shield", ("lightning", 0.46, 128, 122, "cuts")],
    "bolt.slash.fill": ["lightning-slash"],
    "brain": ["brain"],
    "calendar.badge.checkmark": ["calendar-check"],
    "chart.bar.fill": ["chart-bar"],
    "chart.xyaxis.line": ["chart-line"],
    "checkmark.circle.fill": ["check-circle"],
    "circle": ["circle"],
    "gearshape.fill": ["gear"],
    "heart.fill": ["heart"],
    "iphone.radiowaves.left.and.right": ["vibrate"],
    "power": ["power"],
    "slider.horizontal.3": ["sliders-horizontal"],
    "slider.horizontal.below.square.and.square.filled": ["squares-over-slider"],
    "thermometer": ["thermometer-simple"],
}


def icon_path(package: pathlib.Path, icon: str) -> str:
    weight = ICONS[icon]
    suffix = "" if weight == "regular" else f"-{weight}"
    paths = re.findall(r'<path d="([^"]+)"', (package / "assets" / weight / f"{icon}{suffix}.svg").read_text())
    if len(paths) != 1:
        sys.exit(f"{icon}: {len(paths)} paths, expected one")
    return paths[0]


def constant(icon: str) -> str:
    first, *rest = icon.split("-")
    return first + "".join(word.capitalize() for word in rest)


def literal(path: str) -> str:
    return "\n".join(f'    "{path[at:at + 100]}"' for at in range(0, len(path), 100))


def layer(entry) -> str:
    icon, *rest = (entry,) if isinstance(entry, str) else entry
    cuts = rest and rest[-1] == "cuts"
    fields = [constant(icon)] + [f"{number:g}" for number in (rest[:-1] if cuts else rest)]
    return "{" + ", ".join(fields + (["true"] if cuts else [])) + "}"


def main() -> None:
    package = pathlib.Path(sys.argv[1])
    paths = {icon: icon_path(package, icon) for icon in ICONS} | OWN
    print("""\
// SPDX-FileCopyrightText: 2023 Phosphor Icons
// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: MIT

// Written by make-symbols.py from @phosphor-icons/core 2.1.1; licence in LICENSE-phosphor.
// clang-format off

#pragma once

#include <array>

/// The symbols' shapes: SVG path data in a box of 256 by 256.
namespace velmora::symbols {

/// A shape in a symbol, scaled about the box's centre and moved to (x, y).
struct Layer {
    const char* path = nullptr;
    double scale = 1;
    double x = 128;
    double y = 128;
    bool cuts = false; ///< leaves a hole in what lies below
};

struct Symbol {
    const char* name;
    std::array<Layer, 3> layers; ///< bottom first; those without a path are not there
};
""")
    for icon in sorted(paths):
        print(f"inline constexpr auto {constant(icon)} =\n{literal(paths[icon])};")
    print("\ninline constexpr std::array table{")
    for name, layers in sorted(SYMBOLS.items()):
        print(f'    Symbol{{"{name}", {{{{{", ".join(map(layer, layers))}}}}}}},')
    print("};\n\n} // namespace velmora::symbols")


main()
