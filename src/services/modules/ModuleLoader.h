// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Complaints.h"
#include "platform/Log.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

/// Loads parts of Velmora that are shared objects of their own, at their first use. What is loaded stays so.
/// One thread at a time.
class ModuleLoader {
public:
    struct Name {
        const char* file;
        const char* package; ///< that has it
        const char* entry;   ///< function without arguments that gives the module
    };
    struct Setup {
        std::vector<std::filesystem::path> folders; ///< in which modules are looked for, in this order
        std::string category;                       ///< for the log
        std::string consequence;                    ///< of a module that is not there, as a sentence
    };

    ModuleLoader(Setup setup, std::shared_ptr<Log> log);

    /// Null where there is none, or one of another version; the log says why, once until it is there. A
    /// Module begins with `const char* version`, the Velmora that it was built with: after an upgrade the
    /// program that still runs would take a newer module's objects for something else.
    template <typename Module>
    const Module* module(const Name& name)
    {
        return static_cast<const Module*>(find(name, [](void* entry) {
            const auto* module = reinterpret_cast<const Module* (*)()>(entry)();
            return Found{module, module->version};
        }));
    }

private:
    struct Found {
        const void* module;
        const char* version;
    };
    using Ask = Found (*)(void* entry);

    const void* find(const Name& name, Ask ask);
    const void* load(const std::filesystem::path& file, const Name& name, Ask ask);

    Setup setup_;
    std::shared_ptr<Log> log_;
    Complaints complaints_;
    std::map<std::string, const void*> loaded_; ///< by file
};

} // namespace velmora
