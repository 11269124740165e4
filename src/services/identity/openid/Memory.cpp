// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/Memory.h"

#include "base/Wipe.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <curl/curl.h>
#include <jansson.h>
#include <malloc.h>
#include <new>

namespace velmora::openid {

namespace {

void wipedFree(void* memory)
{
    if (memory) explicit_bzero(memory, malloc_usable_size(memory));
    std::free(memory);
}

void* wipedRealloc(void* memory, std::size_t size)
{
    void* const larger = std::malloc(size);
    if (!larger || !memory) return larger;
    std::memcpy(larger, memory, std::min(size, malloc_usable_size(memory)));
    wipedFree(memory);
    return larger;
}

} // namespace

void wipeLibraryMemory()
{
    [[maybe_unused]] static const bool isDone = [] {
        json_set_alloc_funcs(std::malloc, wipedFree);
        if (curl_global_init_mem(CURL_GLOBAL_DEFAULT, std::malloc, wipedFree, wipedRealloc, strdup,
                                 std::calloc) != CURLE_OK)
            throw std::bad_alloc();
        return true;
    }();
}

void appendSecret(std::string& text, std::string_view more)
{
    if (text.capacity() - text.size() < more.size()) {
        std::string larger;
        larger.reserve(std::max(text.size() + more.size(), 2 * text.capacity()));
        larger += text;
        wipe(text);
        text = std::move(larger);
    }
    text += more;
}

} // namespace velmora::openid
