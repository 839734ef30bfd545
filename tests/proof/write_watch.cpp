// The watch. Tested by tests/proof/write_watch_test.cpp.
#include "tests/proof/write_watch.h"

#include "tests/support/own_postgres.h"

namespace proof {
namespace {

using test_support::OwnPostgres;

// The term of a node's row is its own, whoever writes it: from that commit on it holds.
constexpr const char* kWatch = R"sql(
CREATE SCHEMA watch;
CREATE TABLE watch.writes (change xid8, what text, whose text, node text, term bigint);
CREATE TABLE watch.terms (change xid8, node text, term bigint);
CREATE FUNCTION watch.note() RETURNS trigger LANGUAGE plpgsql AS $$
DECLARE
    tenure text[] := regexp_match(current_setting('application_name'),
                                  '^pagerfwd, term ([0-9]+) of ([a-z0-9]+)');
BEGIN
    IF TG_TABLE_NAME = 'host_nodes' AND TG_OP <> 'DELETE' THEN
        IF TG_OP = 'INSERT' OR NEW.term <> OLD.term THEN
            INSERT INTO watch.terms VALUES (pg_current_xact_id(), NEW.node, NEW.term);
        END IF;
    END IF;
    INSERT INTO watch.writes VALUES (
        pg_current_xact_id(), lower(TG_OP) || ' of ' || TG_TABLE_NAME,
        current_setting('application_name'), tenure[2], tenure[1]::bigint);
    RETURN NULL;
END $$;
DO $$
DECLARE
    name text;
BEGIN
    FOR name IN SELECT tablename FROM pg_tables WHERE schemaname = 'public' LOOP
        EXECUTE format('CREATE TRIGGER watched AFTER INSERT OR UPDATE OR DELETE ON %I'
                       ' FOR EACH ROW EXECUTE FUNCTION watch.note()', name);
    END LOOP;
END $$
)sql";

constexpr const char* kLate = R"sql(
SELECT string_agg(DISTINCT what || ' by ' || whose, '; ') FROM watch.writes AS late
WHERE pg_xact_commit_timestamp(change::xid) > (
    SELECT min(pg_xact_commit_timestamp(change::xid)) FROM watch.terms
    WHERE node = late.node AND term > late.term)
)sql";

}  // namespace

void WatchWrites(const std::string& database) {
    OwnPostgres::Ask(database, kWatch);
}

std::string LateWrites(const std::string& database) {
    return OwnPostgres::Ask(database, kLate);
}

int WritesInTerms(const std::string& database) {
    return std::stoi(
        OwnPostgres::Ask(database, "SELECT count(*) FROM watch.writes WHERE term > 0"));
}

}  // namespace proof
