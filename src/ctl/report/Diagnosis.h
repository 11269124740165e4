// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "link/Snapshot.h"
#include "power/Sysfs.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmora::ctl {

/// What a report of a fault needs, and nothing that tells whose laptop it is: of the machine only what a list
/// of attributes allows, which has no serial number, no host, no user. Nothing is sent anywhere.
class Diagnosis {
public:
    /// Reads the tree.
    explicit Diagnosis(const Sysfs& tree);

    /// What the daemon tells; or, without an answer, why there is none.
    void add(const Snapshot& now);
    void add(const std::vector<KeyedArchive>& actions);
    void addAbsence(const std::string& why);

    std::string text() const;
    std::string json() const;

private:
    struct Section {
        std::string name;
        std::vector<std::pair<std::string, std::string>> entries;
    };

    void addSection(Section section);

    std::vector<Section> sections_;
};

} // namespace velmora::ctl
