// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "records/postgresql/Connection.h"
#include "records/postgresql/server/Options.h"

#include <string>

namespace velmora::postgresql {

/// How long the server may take for anything that is asked of it here.
Patience setupPatience();

/// The administrator's way to the server: asks for the password where one is needed, once. What fails throws
/// ServerFailure, or std::runtime_error with a sentence.
class Administrator {
public:
    explicit Administrator(const Request& request) : request_(request) {}
    Administrator(const Administrator&) = delete;
    Administrator& operator=(const Administrator&) = delete;
    ~Administrator();

    /// A connection with an empty search path: a name without a schema means PostgreSQL's own table or
    /// function, never one that somebody else has made under that name.
    Connection connect(const std::string& database);
    /// To the database that the request names.
    Connection connect() { return connect(request_.place.database); }

private:
    Connection connected(const std::string& database);

    const Request& request_;
    std::string password_;
};

/// Makes what is missing: the database, and in it schema, table and the rules that keep people's records
/// apart. What is there stays as it is. Throws where schema or table are somebody else's.
void setUp(Administrator& administrator, const Request& request);

/// Whether that is one of Velmora's people. Throws for a role of another use or with rights that no person
/// may have, and where the database is not set up.
bool isPerson(Connection& server, const std::string& person);

/// Lets a person in, or gives one that is in the new password, which the server learns only in the form that
/// it keeps. Who is new finds no records of an earlier person of that name. Throws where `isPerson` does.
void addPerson(Administrator& administrator, const std::string& person, const std::string& password);

/// Shuts a person out, ends their connections, and removes the role and the records, those in other databases
/// of the server too. Throws where the role owns things of other uses, and then leaves both.
void removePerson(Administrator& administrator, const std::string& person);

/// What makes schema and table other ones than `setUp` makes, or lets others change them, as a sentence;
/// empty where nothing does.
std::string foreignness(Connection& server);

/// Prints a line for each thing that is right or wrong. Whether all is right.
bool check(Connection& server, const std::string& database);

} // namespace velmora::postgresql
