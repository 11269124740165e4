// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "base/Text.h"
#include "base/Translation.h"
#include "records/postgresql/server/Setup.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace velmora::postgresql {

namespace {

constexpr int oldestVersion = 130'000;

/// A question whose answer is whether something is right, or the names of what is wrong.
struct Row {
    const char* right;
    const char* wrong;     ///< %1 stands for the names
    const char* statement; ///< gives true, or an empty text, where all is right
    bool isAdvice = false; ///< otherwise might be meant
};

constexpr std::array serverRows{
    Row{trMark("The server speaks TLS."),
        trMark("The server speaks no TLS, without which velmora sends nothing: set ssl = on in "
               "postgresql.conf, with a certificate and its key; a self-signed one will do."),
        "SELECT current_setting('ssl')::boolean"},
    Row{trMark("Passwords are kept as SCRAM-SHA-256."),
        trMark("Passwords are not kept as SCRAM-SHA-256: set password_encryption in postgresql.conf."),
        "SELECT current_setting('password_encryption') = 'scram-sha-256'"},
    Row{trMark("What was saved survives a crash."),
        trMark("What was saved may be lost in a crash: set fsync, full_page_writes and synchronous_commit "
               "to on."),
        R"(SELECT current_setting('fsync')::boolean AND current_setting('full_page_writes')::boolean
             AND current_setting('synchronous_commit') <> 'off')"},
    Row{trMark("The database takes texts in UTF-8."), trMark("The database does not take texts in UTF-8."),
        "SELECT current_setting('server_encoding') = 'UTF8'"},
    Row{trMark("There are connections enough."),
        trMark("At most %1 may be connected at once: set max_connections in postgresql.conf."),
        R"(SELECT CASE WHEN n >= 20 THEN '' ELSE n::text END FROM (
             SELECT current_setting('max_connections')::int
                    - current_setting('superuser_reserved_connections')::int AS n) AS connections)"},
    Row{trMark("Nobody comes in over the network without SCRAM-SHA-256 or a certificate."),
        trMark("Lines of pg_hba.conf let people in over the network by weaker means: %1."),
        R"(SELECT coalesce(string_agg(line_number::text || ' (' || auth_method || ')', ', '), '')
           FROM pg_hba_file_rules
           WHERE type LIKE 'host%' AND auth_method IN ('trust', 'password', 'ident')
             AND database && ARRAY['all', current_database()::text])"},
    Row{trMark("It listens for other machines."),
        trMark("It listens for this computer alone; for others set listen_addresses = '*' in "
               "postgresql.conf."),
        "SELECT current_setting('listen_addresses') NOT IN ('', 'localhost', '127.0.0.1', '::1')", true},
    Row{trMark("Lines of pg_hba.conf let people in from other machines."),
        trMark("No line of pg_hba.conf lets people in from other machines, as this one would: "
               "hostssl %1 +velmora_user samenet scram-sha-256"),
        R"(SELECT CASE WHEN EXISTS (
             SELECT FROM pg_hba_file_rules WHERE type IN ('host', 'hostssl')
               AND auth_method NOT IN ('reject', 'trust', 'ident')
               AND address NOT LIKE '127.%' AND address NOT IN ('::1', 'samehost', 'localhost')
               AND database && ARRAY['all', current_database()::text])
           THEN '' ELSE current_database()::text END)",
        true},
};

constexpr auto tableStatement = "SELECT to_regclass('velmora.record') IS NOT NULL";

constexpr std::array tableRows{
    Row{trMark("The table of records is as it should be."),
        trMark("The table of records has other columns: %1."),
        R"(SELECT CASE WHEN c = 'owner text, type text, name text, fields jsonb, version bigint, seq bigint'
             THEN '' ELSE c END
           FROM (SELECT string_agg(attname || ' ' || format_type(atttypid, NULL), ', ' ORDER BY attnum) AS c
                 FROM pg_attribute WHERE attrelid = 'velmora.record'::regclass
                   AND attnum > 0 AND NOT attisdropped) AS columns)"},
    Row{trMark("Its keys and the index for listings are there."),
        trMark("Its key (owner, name), or the index for listings (owner, type, seq), is missing."),
        R"(SELECT count(*) = 2 FROM (
             SELECT DISTINCT pg_get_indexdef(indexrelid, 1, true) || ' ' || pg_get_indexdef(indexrelid, 2, true)
                             || ' ' || pg_get_indexdef(indexrelid, 3, true) AS keys
             FROM pg_index WHERE indrelid = 'velmora.record'::regclass AND indisvalid) AS indexes
           WHERE keys IN ('owner name ', 'owner type seq'))"},
    Row{trMark("Row security is on, for the table's owner too."),
        trMark("Row security is not on, or not for the table's owner: people may see each other's records."),
        "SELECT relrowsecurity AND relforcerowsecurity FROM pg_class WHERE oid = 'velmora.record'::regclass"},
    Row{trMark("Its one policy shows everybody their own records."),
        trMark("Its policies are not the one that shows everybody their own records: %1."),
        R"(SELECT CASE WHEN count(*) = 1 AND bool_and(polpermissive AND polcmd = '*' AND polroles = '{0}'
             AND pg_get_expr(polqual, polrelid) = '(owner = (CURRENT_USER)::text)'
             AND pg_get_expr(polwithcheck, polrelid) = '(owner = (CURRENT_USER)::text)') THEN ''
           ELSE coalesce(string_agg(polname, ', ' ORDER BY polname), 'there is none') END
           FROM pg_policy WHERE polrelid = 'velmora.record'::regclass)"},
    Row{trMark("People may do what velmora does."), trMark("People lack rights to: %1."),
        R"(SELECT coalesce(string_agg(what, ', '), '') FROM (VALUES
             ('look into the schema', has_schema_privilege('velmora_user', 'velmora', 'USAGE')),
             ('connect', has_database_privilege('velmora_user', current_database(), 'CONNECT')),
             ('read', has_table_privilege('velmora_user', 'velmora.record', 'SELECT')),
             ('delete', has_table_privilege('velmora_user', 'velmora.record', 'DELETE')),
             ('insert', has_column_privilege('velmora_user', 'velmora.record', 'fields', 'INSERT')),
             ('update', has_column_privilege('velmora_user', 'velmora.record', 'fields', 'UPDATE')))
           AS rights (what, isGiven) WHERE NOT isGiven)"},
    Row{trMark("People may do no more than that."),
        trMark("People have rights that they should not have: %1."),
        R"(SELECT coalesce(string_agg(what, ', '), '') FROM (VALUES
             ('empty the table', has_table_privilege('velmora_user', 'velmora.record', 'TRUNCATE')),
             ('hang triggers on it', has_table_privilege('velmora_user', 'velmora.record', 'TRIGGER')),
             ('refer to it', has_any_column_privilege('velmora_user', 'velmora.record', 'REFERENCES')),
             ('name the owner', has_column_privilege('velmora_user', 'velmora.record', 'owner', 'INSERT, UPDATE')),
             ('create things in the schema', has_schema_privilege('velmora_user', 'velmora', 'CREATE')),
             ('log in as velmora_user', (SELECT rolcanlogin FROM pg_roles WHERE rolname = 'velmora_user')))
           AS rights (what, isGiven) WHERE isGiven)"},
    Row{trMark("Nobody but Velmora's people has rights to the table."),
        trMark("Others have rights to the table: %1."),
        R"(SELECT coalesce(string_agg(DISTINCT coalesce(g.rolname, 'everybody'), ', '), '')
           FROM pg_class c, aclexplode(c.relacl) a LEFT JOIN pg_roles g ON g.oid = a.grantee
           WHERE c.oid = 'velmora.record'::regclass AND a.grantee <> c.relowner
             AND g.rolname IS DISTINCT FROM 'velmora_user')"},
    // Superusers count as members of every role.
    Row{trMark("None of Velmora's people has rights beyond that."),
        trMark("These people may read everybody's records, or give themselves the right to: %1."),
        R"(SELECT coalesce(string_agg(DISTINCT p.rolname, ', '), '')
           FROM pg_roles p JOIN pg_roles r ON pg_has_role(p.oid, r.oid, 'MEMBER')
           WHERE pg_has_role(p.oid, 'velmora_user', 'MEMBER')
             AND (NOT p.rolsuper OR EXISTS (SELECT FROM pg_auth_members
                                            WHERE member = p.oid AND roleid = 'velmora_user'::regrole))
             AND (r.rolsuper OR r.rolbypassrls OR r.rolcreaterole OR r.rolreplication
                  OR r.oid = (SELECT relowner FROM pg_class WHERE oid = 'velmora.record'::regclass)))"},
};

/// Prints the lines of a report.
class Report {
public:
    explicit Report(Connection& server) : server_(server) {}

    bool isRight() const { return isRight_; }

    void tell(bool isRight, const std::string& text)
    {
        isRight_ = isRight_ && isRight;
        line(isRight ? tr("right") : tr("WRONG"), text);
    }

    void ask(const Row& row)
    {
        constexpr auto notAllowed = "42501";
        try {
            const auto answer = server_.ask(row.statement, {}, setupPatience());
            const std::string told(answer.text(0, 0).value_or("?"));
            const bool isRight = told == "t" || told.empty();
            if (!isRight && row.isAdvice) return line(tr("note"), tr(row.wrong, told));
            tell(isRight, isRight ? tr(row.right) : tr(row.wrong, told));
        } catch (const ServerFailure& failure) {
            if (failure.state.empty()) throw;
            if (failure.state == notAllowed)
                return line("?", tr("%1 This user may not look.", tr(row.right)));
            tell(false, tr("%1 The server says: %2", tr(row.wrong, "?"), std::string(failure.what())));
        }
    }

private:
    static void line(const std::string& mark, const std::string& text)
    {
        std::printf("%-6s %s\n", mark.c_str(), printable(text).c_str());
    }

    Connection& server_;
    bool isRight_ = true;
};

} // namespace

bool check(Connection& server, const std::string& database)
{
    Report report(server);
    const auto version = server.serverVersion();
    const auto number = std::to_string(version / 10'000) + "." + std::to_string(version % 10'000);
    report.tell(version >= oldestVersion, version >= oldestVersion
                                              ? tr("It is PostgreSQL %1.", number)
                                              : tr("It is PostgreSQL %1; 13 or later is needed.", number));
    for (const auto& row : serverRows) report.ask(row);
    if (server.ask(tableStatement, {}, setupPatience()).text(0, 0) != "t") {
        report.tell(false, tr("The database %1 has no table of records: \"setup\" makes it.", database));
        return false;
    }
    for (const auto& row : tableRows) report.ask(row);
    return report.isRight();
}

} // namespace velmora::postgresql
