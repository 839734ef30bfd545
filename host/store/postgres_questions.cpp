// Texts for PostgreSQL. Tested by tests/unit/host/postgres_test.cpp, and by the contract.
#include "host/store/postgres_questions.h"

namespace host {
namespace {

std::string CommentWithVersion(int64_t version) {
    return "COMMENT ON TABLE Host_Settings IS '" + std::to_string(version) + "'";
}

constexpr Questions kQuestions = {
    // Changes with every transaction that ends, whoever made it; but for a renewal of a node's
    // lease, which has a number of the server's as any other, and is counted: else each node would
    // take every second for news that the others live.
    "SELECT hashtextextended((CAST(pg_snapshot_xmax(seen)::text AS bigint)"
    " - (SELECT coalesce(sum(renewals), 0) FROM Host_Nodes)::bigint)::text"
    " || ':' || split_part(seen::text, ':', 3), 0) FROM (SELECT pg_current_snapshot() AS seen) AS "
    "s",
    // Whoever changes the tables does so while nobody else is there.
    "SELECT 1",
    "SELECT attname FROM pg_attribute WHERE attrelid = to_regclass(lower(?))"
    " AND attnum > 0 AND NOT attisdropped ORDER BY attnum",
    "SELECT CAST(obj_description(to_regclass('host_settings')) AS INTEGER)",
    "SELECT 1 FROM pg_class WHERE relnamespace = current_schema()::regnamespace"
    " AND relkind IN ('r', 'p', 'v', 'f') LIMIT 1",
    CommentWithVersion,
    "CREATE FUNCTION AlarmLog_StaysAcknowledged() RETURNS trigger LANGUAGE plpgsql AS"
    " 'BEGIN IF NEW.alarmack NOT IN ('''', ''0'') THEN NEW.pagerstate := ''1''; END IF;"
    " RETURN NEW; END';"
    "CREATE TRIGGER AlarmLog_StaysAcknowledged BEFORE UPDATE OF pagerstate, alarmack ON AlarmLog"
    " FOR EACH ROW EXECUTE FUNCTION AlarmLog_StaysAcknowledged()",
    "SELECT setval(pg_get_serial_sequence(?, 'row_id'), ?, false)",
    "Host_Now()",
    // A test puts another in its place.
    "CREATE FUNCTION Host_Now() RETURNS BIGINT LANGUAGE sql VOLATILE AS"
    " 'SELECT CAST(extract(epoch FROM clock_timestamp()) * 1000 AS BIGINT)'",
};

}  // namespace

const Questions& PostgresQuestions() {
    return kQuestions;
}

}  // namespace host
