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
        trMark("Lines of pg_hba.conf are wrong, or let people in over the network by other means than "
               "scram-sha-256 or cert: %1."),
        R"(SELECT coalesce(string_agg(line_number::text || ' (' || coalesce(error, auth_method) || ')', ', '
                                      ORDER BY line_number), '')
           FROM pg_hba_file_rules
           WHERE error IS NOT NULL
              OR type LIKE 'host%' AND auth_method NOT IN ('scram-sha-256', 'md5', 'cert', 'reject'))"},
    Row{trMark("It listens for other machines."),
        trMark("It listens for this computer alone; for others set listen_addresses = '*' in "
               "postgresql.conf."),
        "SELECT current_setting('listen_addresses') NOT IN ('', 'localhost', '127.0.0.1', '::1')", true},
    Row{trMark("Lines of pg_hba.conf let people in from other machines."),
        trMark("No line of pg_hba.conf lets people in from other machines, as this one would: "
               "hostssl %1 +velmora_user samenet scram-sha-256"),
        R"(SELECT CASE WHEN EXISTS (
             SELECT FROM pg_hba_file_rules WHERE type IN ('host', 'hostssl')
               AND auth_method IN ('scram-sha-256', 'md5', 'cert')
               AND address NOT LIKE '127.%' AND address NOT IN ('::1', 'samehost', 'localhost')
               AND database && ARRAY['all', current_database()::text])
           THEN '' ELSE current_database()::text END)",
        true},
};

constexpr auto tableStatement = "SELECT to_regclass('velmora.record') IS NOT NULL";

/// Where one of these is wrong, nothing there may be touched with an administrator's rights.
constexpr std::array ownRows{
    Row{trMark("Schema and table belong to an administrator."),
        trMark("Schema or table belong to somebody who is no superuser and may change them: %1."),
        R"(SELECT coalesce(string_agg(rolname, ', ' ORDER BY rolname), '') FROM pg_roles
           WHERE NOT rolsuper AND rolname <> current_user
             AND oid IN (SELECT nspowner FROM pg_namespace WHERE nspname = 'velmora' UNION
                         SELECT relowner FROM pg_class WHERE oid = 'velmora.record'::regclass))"},
    Row{trMark("The table of records is as it should be."),
        trMark("The table of records has other columns: %1."),
        R"(SELECT CASE WHEN c = 'owner text CURRENT_USER, type text, name text, fields jsonb ''{}''::jsonb, '
                                'version bigint 1, seq bigint a' THEN '' ELSE c END
           FROM (SELECT string_agg(concat_ws(' ', attname, format_type(atttypid, NULL),
                                             pg_get_expr(adbin, adrelid), nullif(attidentity::text, ''),
                                             nullif(attgenerated::text, '')), ', ' ORDER BY attnum) AS c
                 FROM pg_attribute LEFT JOIN pg_attrdef ON adrelid = attrelid AND adnum = attnum
                 WHERE attrelid = 'velmora.record'::regclass AND attnum > 0 AND NOT attisdropped) AS columns)"},
    Row{trMark("Nothing else hangs on it."), trMark("On the table hangs what does not belong there: %1."),
        R"(WITH it AS (SELECT * FROM pg_class WHERE oid = 'velmora.record'::regclass)
           SELECT coalesce(string_agg(what, ', ' ORDER BY what), '') FROM (
             SELECT 'trigger ' || tgname FROM pg_trigger, it WHERE tgrelid = it.oid AND NOT tgisinternal
             UNION ALL SELECT 'rule ' || rulename FROM pg_rewrite, it WHERE ev_class = it.oid
             UNION ALL SELECT 'constraint ' || conname FROM pg_constraint c, it
               WHERE it.oid IN (conrelid, confrelid) AND contype NOT IN ('p', 'n')
                 AND pg_get_constraintdef(c.oid) NOT IN (
                   'CHECK ((jsonb_typeof(fields) = ''object''::text))',
                   'CHECK (((octet_length(name) <= 255) AND (octet_length((fields)::text) <= 65536)))')
             UNION ALL SELECT 'inheritance' FROM pg_inherits, it WHERE it.oid IN (inhrelid, inhparent)
             UNION ALL SELECT 'a kind of its own' FROM it WHERE relkind <> 'r' OR relpersistence <> 'p'
           ) AS found (what))"},
};

constexpr std::array tableRows{
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
    Row{trMark("Nobody but Velmora's people has rights to schema and table."),
        trMark("Others have rights to schema or table: %1."),
        R"(SELECT coalesce(string_agg(DISTINCT coalesce(g.rolname, 'everybody'), ', '), '')
           FROM (SELECT relowner, relacl FROM pg_class WHERE oid = 'velmora.record'::regclass
                 UNION ALL SELECT nspowner, nspacl FROM pg_namespace WHERE nspname = 'velmora'
                 UNION ALL SELECT NULL, attacl FROM pg_attribute WHERE attrelid = 'velmora.record'::regclass
                ) AS c (owner, acl), aclexplode(acl) AS a LEFT JOIN pg_roles g ON g.oid = a.grantee
           WHERE a.grantee IS DISTINCT FROM c.owner AND g.rolname IS DISTINCT FROM 'velmora_user')"},
    // Superusers count as members of every role.
    Row{trMark("None of Velmora's people has rights beyond that."),
        trMark("These people may read everybody's records, or give themselves the right to: %1."),
        R"(SELECT coalesce(string_agg(DISTINCT p.rolname, ', '), '')
           FROM pg_roles p JOIN pg_roles r ON pg_has_role(p.oid, r.oid, 'MEMBER')
           WHERE pg_has_role(p.oid, 'velmora_user', 'MEMBER')
             AND (NOT p.rolsuper OR EXISTS (SELECT FROM pg_auth_members
                                            WHERE member = p.oid AND roleid = 'velmora_user'::regrole))
             AND (r.rolsuper OR r.rolbypassrls OR r.rolcreaterole OR r.rolreplication
                  OR r.oid IN (SELECT relowner FROM pg_class WHERE oid = 'velmora.record'::regclass
                               UNION SELECT nspowner FROM pg_namespace WHERE nspname = 'velmora'
                               UNION SELECT datdba FROM pg_database WHERE datname = current_database())))"},
    Row{trMark("The database belongs to an administrator."),
        trMark(
            "The database belongs to %1, who is no superuser and may decide what is run when others connect: "
            "ALTER DATABASE ... OWNER TO postgres."),
        R"(SELECT coalesce(string_agg(rolname, ', '), '') FROM pg_roles JOIN pg_database ON datdba = pg_roles.oid
           WHERE datname = current_database() AND NOT rolsuper AND rolname <> current_user)"},
    Row{trMark("Nobody but Velmora's people gets into the database."),
        trMark(
            "Everybody who is known to the server gets into the database, unless: REVOKE ALL ON DATABASE %1 "
            "FROM PUBLIC."),
        R"(SELECT coalesce(string_agg(DISTINCT quote_ident(datname), ''), '')
           FROM pg_database, aclexplode(coalesce(datacl, acldefault('d', datdba))) AS a
           WHERE datname = current_database() AND a.grantee = 0)",
        true},
};

/// The answer to it: "t" or nothing where all is right.
std::string answerTo(const Row& row, Connection& server)
{
    return std::string(server.ask(row.statement, {}, setupPatience()).text(0, 0).value_or("?"));
}

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
            const auto found = answerTo(row, server_);
            const bool isRight = found == "t" || found.empty();
            if (!isRight && row.isAdvice) return line(tr("note"), tr(row.wrong, found));
            tell(isRight, isRight ? tr(row.right) : tr(row.wrong, found));
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

std::string foreignness(Connection& server)
{
    for (const auto& row : ownRows) {
        const auto found = answerTo(row, server);
        if (!found.empty()) return tr(row.wrong, found);
    }
    return {};
}

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
    for (const auto& row : ownRows) report.ask(row);
    for (const auto& row : tableRows) report.ask(row);
    return report.isRight();
}

} // namespace velmora::postgresql
