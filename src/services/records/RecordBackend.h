// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/CloudDatabase.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// A record as stores keep it: its fields are the text of one JSON object, see RecordCodec.
struct StoredRecord {
    std::string type;
    std::string name;
    std::string fields;
};

/// One kind of record store, asked one thing after the other on one thread, where each call may block for
/// seconds, but for a bounded time. It connects when it is first asked, and again whenever it has to. Making
/// one does nothing yet.
class RecordBackend {
public:
    virtual ~RecordBackend() = default;

    virtual CloudResult<StoredRecord> fetch(const std::string& name) = 0;

    /// Merges the fields into the stored ones in one atomic step; makes the record where there is none.
    virtual std::optional<CloudError> save(const StoredRecord& record) = 0;

    /// The first ones of that type in order of their creation.
    virtual CloudResult<std::vector<StoredRecord>> query(const std::string& type, std::size_t maximum) = 0;

    /// Done as well where there is no such record.
    virtual std::optional<CloudError> remove(const std::string& name) = 0;

    /// Why the store would not do although it can be reached: a user who may read everybody's records, say.
    virtual std::optional<CloudError> check() = 0;

    /// Nothing was asked for a while: what is kept open, the connection above all, may be closed.
    virtual void rest() noexcept = 0;

    /// Ends what is waited for now or will be, in failure and soon. Any thread.
    virtual void cancel() noexcept = 0;
};

} // namespace velmora
