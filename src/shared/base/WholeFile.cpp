// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/WholeFile.h"

#include "base/Handle.h"

#include <cstdio>
#include <sys/stat.h>

namespace velmora {

namespace {

using File = Handle<std::FILE, std::fclose>;

} // namespace

std::optional<std::string> readWholeFile(const std::filesystem::path& file)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) return std::nullopt;
    const auto size = std::filesystem::file_size(file, error);
    if (error || size > maximumFileBytes) return std::nullopt;
    const File in(std::fopen(file.c_str(), "rbe"));
    if (!in) return std::nullopt;
    std::string bytes(size, '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), in.get()));
    return std::ferror(in.get()) ? std::nullopt : std::optional(std::move(bytes));
}

bool writeWholeFile(const std::filesystem::path& file, std::string_view bytes)
{
    File out(std::fopen(file.c_str(), "wbe"));
    if (!out) return false;
    const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), out.get()) == bytes.size();
    return std::fclose(out.release()) == 0 && isWritten;
}

void makePrivateFolder(const std::filesystem::path& folder)
{
    std::error_code ignored; // who writes there notices
    std::filesystem::create_directories(folder.parent_path(), ignored);
    mkdir(folder.c_str(), S_IRWXU);
}

} // namespace velmora
