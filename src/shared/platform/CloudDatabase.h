// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Date.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace velmora {

/// A record of the user's private store: values under the names of fields.
class CloudRecord {
public:
    using Value = std::variant<double, bool, std::string, Date>;
    using Fields = std::map<std::string, Value, std::less<>>;

    CloudRecord(std::string type, std::string name, Fields stored = {})
        : type_(std::move(type)), name_(std::move(name)), fields_(std::move(stored))
    {
    }

    const std::string& type() const { return type_; }
    const std::string& name() const { return name_; }

    /// Nothing where the field is absent or of another type.
    template <typename T>
    std::optional<T> value(std::string_view field) const
    {
        const auto found = fields_.find(field);
        const auto* typed = found == fields_.end() ? nullptr : std::get_if<T>(&found->second);
        return typed ? std::optional<T>(*typed) : std::nullopt;
    }

    /// A save sends what was set, and leaves the other fields of the stored record as they are.
    void set(std::string_view field, Value value)
    {
        changes_.insert_or_assign(std::string(field), value);
        fields_.insert_or_assign(std::string(field), std::move(value));
    }
    const Fields& changes() const { return changes_; }
    const Fields& fields() const { return fields_; }

private:
    std::string type_;
    std::string name_;
    Fields fields_;
    Fields changes_;
};

/// What keeps a record store from working.
enum class RecordFault : std::uint8_t {
    none,
    noModule,   ///< the part of Velmora that speaks to this kind of store is not installed
    noPassword, ///< none is kept, or the secret store is locked
    unknownHost,
    unreachable,    ///< no answer
    noServer,       ///< nobody listens there
    noEncryption,   ///< it offers no TLS
    certificate,    ///< not trusted, or for another name
    channelBinding, ///< it cannot bind the password to the connection, or somebody listens in between
    password,       ///< or user
    noDatabase,
    noTable, ///< the server is not set up for Velmora
    noRights,
    superuser, ///< that user may read everybody's records
    tooManyClients,
    full, ///< the disk
    slow, ///< it answered, but not in time
    file, ///< the file cannot be opened or written
    other,
};
inline constexpr std::array recordFaultTexts{"",
                                             "no-module",
                                             "no-password",
                                             "unknown-host",
                                             "unreachable",
                                             "no-server",
                                             "no-encryption",
                                             "certificate",
                                             "channel-binding",
                                             "password",
                                             "no-database",
                                             "no-table",
                                             "no-rights",
                                             "superuser",
                                             "too-many-clients",
                                             "full",
                                             "slow",
                                             "file",
                                             "other"};

struct CloudError {
    enum class Code : std::uint8_t {
        notFound,
        unreadable, ///< the record is there, and what it holds is none: a save would not change that
        failed,
    };
    Code code = Code::failed;
    std::string text{}; ///< for the log
    RecordFault fault = RecordFault::other;
};

template <typename T>
using CloudResult = std::variant<T, CloudError>;

/// The user's private record store, which the user's machines share.
///
/// Calls return at once and may be made on any thread. Each is answered exactly once, on any thread and never
/// from inside the call, in bounded time; what is not answered yet when the store is destroyed is not
/// answered. It may be destroyed on any thread, also by an answer of its own, and waits for nothing then.
/// Nothing is queued for later and nothing tried again: a request fails, and its caller asks anew.
class CloudDatabase {
public:
    using Listing = std::vector<CloudResult<CloudRecord>>;
    using Fetched = std::function<void(CloudResult<CloudRecord>)>;
    using Queried = std::function<void(CloudResult<Listing>)>;
    using Done = std::function<void(std::optional<CloudError>)>; ///< nothing: it is done

    /// How many records one query gives at most, unless told otherwise.
    static constexpr std::size_t maximumResults = 200;

    virtual ~CloudDatabase() = default;

    virtual void fetch(std::string name, Fetched fetched) = 0;

    /// Merges the record's changes into the stored record in one atomic step, and creates it where there is
    /// none. Values that are not finite are left out.
    virtual void save(CloudRecord record, Done done) = 0;

    /// The first `maximum` records of that type in order of their creation. One that cannot be read is an
    /// error in its place.
    virtual void query(std::string type, std::size_t maximum, Queried queried) = 0;

    /// Done as well where there is no such record.
    virtual void remove(std::string name, Done done) = 0;
};

} // namespace velmora
