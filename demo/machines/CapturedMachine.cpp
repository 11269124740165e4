// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "CapturedMachine.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace velmora {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view supplies = "class/power_supply/";

int errnoNamed(std::string_view name)
{
    static constexpr std::pair<std::string_view, int> known[] = {
        {"EACCES", EACCES}, {"EAGAIN", EAGAIN}, {"EBUSY", EBUSY},   {"EINVAL", EINVAL},
        {"EIO", EIO},       {"ENODEV", ENODEV}, {"ENXIO", ENXIO},   {"ENODATA", ENODATA},
        {"ENOENT", ENOENT}, {"EPERM", EPERM},   {"EPROTO", EPROTO}, {"ETIMEDOUT", ETIMEDOUT},
    };
    const auto* found = std::ranges::find(known, name, &std::pair<std::string_view, int>::first);
    if (found == std::end(known)) throw std::runtime_error("no such errno: " + std::string(name));
    return found->second;
}

/// The byte that the escape at the head of `text` (after its backslash) stands for; takes it off.
char unescapeOne(std::string_view& text)
{
    if (text.empty()) throw std::runtime_error("backslash at the end");
    const char letter = text.front();
    text.remove_prefix(1);
    if (letter == 'n') return '\n';
    if (letter == 't') return '\t';
    if (letter == '\\') return '\\';
    unsigned byte = 0;
    const auto digits = text.substr(0, 2);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (letter != 'x' || error != std::errc{} || end - digits.data() != 2) {
        throw std::runtime_error("unknown escape");
    }
    text.remove_prefix(2);
    return static_cast<char>(byte);
}

std::string unescape(std::string_view text)
{
    std::string bytes;
    while (!text.empty()) {
        const char next = text.front();
        text.remove_prefix(1);
        bytes += next == '\\' ? unescapeOne(text) : next;
    }
    return bytes;
}

/// Refuses what would be laid outside the tree.
std::string checked(std::string_view path)
{
    const fs::path parts(path);
    if (path.empty() || parts.is_absolute() || std::ranges::find(parts, "..") != parts.end()) {
        throw std::runtime_error("a path within the tree is wanted: " + std::string(path));
    }
    return std::string(path);
}

void takeLine(CapturedMachine& machine, std::string_view line)
{
    if (line.empty() || line.front() == '#') return;
    const auto tab = line.find('\t');
    if (tab == std::string_view::npos) throw std::runtime_error("no tab");
    const auto path = line.substr(0, tab);
    const auto value = line.substr(tab + 1);
    if (path.starts_with('!')) {
        machine.errors.insert_or_assign(checked(path.substr(1)), errnoNamed(value));
    } else {
        machine.values.insert_or_assign(checked(path), unescape(value));
    }
}

bool isDriversOwn(std::string_view attribute)
{
    static constexpr std::array<std::string_view, 7> elsewhere = {
        "uevent",           "type",        "alarm", "charge_start_threshold", "charge_stop_threshold",
        "charge_behaviour", "charge_types"};
    return !attribute.starts_with("charge_control_") && attribute.find('/') == std::string_view::npos &&
           std::ranges::find(elsewhere, attribute) == elsewhere.end();
}

void writeFile(const fs::path& file, std::string_view bytes)
{
    fs::create_directories(file.parent_path());
    fs::remove(file); // it may be such a link from the last time: written through, it would be our own memory
    std::ofstream out(file, std::ios::binary);
    out << bytes << '\n' << std::flush;
    if (!out)
        throw fs::filesystem_error("cannot write", file, std::error_code(errno, std::generic_category()));
}

/// The names of all supplies, those included of which nothing can be read.
std::set<std::string> supplyNames(const CapturedMachine& machine)
{
    std::set<std::string> names;
    const auto take = [&names](const std::string& path) {
        if (!path.starts_with(supplies)) return;
        const auto name = path.substr(supplies.size());
        names.insert(name.substr(0, name.find('/')));
    };
    for (const auto& [path, value] : machine.values) take(path);
    for (const auto& [path, error] : machine.errors) take(path);
    return names;
}

} // namespace

CapturedMachine CapturedMachine::parse(std::string_view text)
{
    CapturedMachine machine;
    for (int number = 1; !text.empty(); ++number) {
        const auto end = text.find('\n');
        try {
            takeLine(machine, text.substr(0, end));
        } catch (const std::runtime_error& fault) {
            throw std::runtime_error("line " + std::to_string(number) + ": " + fault.what());
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return machine;
}

CapturedMachine CapturedMachine::load(const fs::path& file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    if (!in) throw std::runtime_error(file.string() + ": cannot be read");
    try {
        return parse(text.str());
    } catch (const std::runtime_error& fault) {
        throw std::runtime_error(file.string() + ": " + fault.what());
    }
}

std::string CapturedMachine::uevent(std::string_view supply) const
{
    const auto folder = std::string(supplies) + std::string(supply) + '/';
    if (const auto own = values.find(folder + "uevent"); own != values.end()) return own->second;

    std::string text = "POWER_SUPPLY_NAME=" + std::string(supply);
    if (const auto type = values.find(folder + "type"); type != values.end()) {
        text += "\nPOWER_SUPPLY_TYPE=" + type->second;
    }
    for (auto at = values.lower_bound(folder); at != values.end() && at->first.starts_with(folder); ++at) {
        std::string name = at->first.substr(folder.size());
        if (!isDriversOwn(name)) continue;
        std::ranges::transform(name, name.begin(), [](char c) {
            return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        });
        text += "\nPOWER_SUPPLY_" + name + '=' + at->second.substr(0, at->second.find('\n'));
    }
    return text;
}

void CapturedMachine::layInto(const fs::path& root) const
{
    fs::create_directories(root / "class/power_supply");
    fs::create_directories(root / "class/thermal");
    for (const auto& [path, value] : values) writeFile(root / path, value);
    for (const auto& name : supplyNames(*this)) {
        writeFile(root / supplies / name / "uevent", uevent(name));
    }
    for (const auto& [path, error] : errors) {
        fs::create_directories((root / path).parent_path());
        fs::remove(root / path);
        fs::create_symlink("/proc/self/mem", root / path);
    }
}

} // namespace velmora
