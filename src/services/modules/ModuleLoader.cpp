// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "modules/ModuleLoader.h"

#include "base/Version.h"

#include <dlfcn.h>
#include <string_view>
#include <system_error>
#include <utility>

namespace velmora {

ModuleLoader::ModuleLoader(Setup setup, std::shared_ptr<Log> log)
    : setup_(std::move(setup)), log_(std::move(log)), complaints_(*log_, setup_.category)
{
}

const void* ModuleLoader::find(const Name& name, Ask ask)
{
    auto& loaded = loaded_[name.file];
    for (const auto& folder : setup_.folders)
        if (std::error_code error; !loaded && std::filesystem::exists(folder / name.file, error))
            loaded = load(folder / name.file, name, ask);
    if (loaded)
        complaints_.settle(name.file);
    else
        complaints_.raise(name.file, std::string(name.file) +
                                         " is not there, or cannot be used: the package " + name.package +
                                         " of this version has it. " + setup_.consequence);
    return loaded;
}

/// It stays loaded, also where it is of no use: libraries that it brought may have left threads or thread
/// variables behind.
const void* ModuleLoader::load(const std::filesystem::path& file, const Name& name, Ask ask)
{
    void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* symbol = handle ? dlsym(handle, name.entry) : nullptr;
    if (!symbol) {
        const char* why = dlerror();
        complaints_.raise(file,
                          "Could not load " + file.string() + ": " + (why ? why : "it has no entry") + ".");
        return nullptr;
    }
    const auto loaded = ask(symbol);
    if (std::string_view(loaded.version) == version()) return loaded.module;
    complaints_.raise(file, file.string() + " is of Velmora " + loaded.version + ", this program of " +
                                version() + ": it is used once the package " + name.package +
                                " is of the same version and this program has started anew.");
    return nullptr;
}

} // namespace velmora
