// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "CapturedMachine.h"
#include "TemporaryFolder.h"
#include "base/SystemClock.h"
#include "power/LinuxPowerSources.h"
#include "power/LinuxThermalLevel.h"

#include <cstdint>
#include <cstdlib>

using namespace velmora;

namespace {

namespace key = power_source_key;

struct Silence final : Log {
    void write(LogLevel, std::string_view, std::string_view) override {}
};

void require(bool holds)
{
    if (!holds) std::abort();
}

void readAsMachine(const std::filesystem::path& root)
{
    Silence log;
    const SystemClock clock;
    LinuxPowerSources sources(Sysfs(root), clock, log, nullptr);
    for (auto& description : sources.descriptions()) {
        const auto within = [&](const char* name, double least, double most, double missing) {
            const auto found = description.find(name);
            const double value = found == description.end() ? missing : std::get<double>(found->second);
            require(value >= least && value <= most);
        };
        within(key::currentCapacity, 0, 100, -1);
        within(key::health, 0, 100, 0);
        within(key::chargingPower, -1e6, 1e6, 0);
        for (const auto* name : {key::timeToFullCharge, key::timeToEmpty}) {
            const auto minutes = std::get<std::int64_t>(description.at(name));
            require(minutes == -1 || (minutes >= 1 && minutes <= 3 * 24 * 60));
        }
    }
    const int level = LinuxThermalLevel(Sysfs(root), log).level();
    require(level >= 0 && level <= 3);
}

} // namespace

/// Whatever stands in the tree, reading it ends, and what is told of it is within reason. The captured
/// laptops in tests/machines make a good corpus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
try {
    const TemporaryFolder root;
    CapturedMachine::parse({reinterpret_cast<const char*>(bytes), size}).layInto(root.path());
    readAsMachine(root.path());
    return 0;
} catch (const std::runtime_error&) {
    return 0; // no machine, or none that can be laid as files
}
