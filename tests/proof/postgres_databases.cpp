// Databases of a server.
#include <cstdlib>

#include "tests/proof/site_databases.h"
#include "tests/support/own_postgres.h"

namespace proof {
namespace {

namespace fs = std::filesystem;
using test_support::OwnPostgres;

// The page's two numbers, the lowest byte first: clock_page.h. In milliseconds, as Host_Now has it.
constexpr const char* kWorldsTime = R"sql(
CREATE OR REPLACE FUNCTION Host_Now() RETURNS BIGINT LANGUAGE sql VOLATILE AS $$
    SELECT (sum(get_byte(shown, byte)::bigint << (8 * (byte % 8))) / 1000)::bigint
    FROM pg_read_binary_file('%') AS shown, generate_series(0, 15) AS byte
$$)sql";

class Databases final : public SiteDatabases {
 public:
    std::string Make(const fs::path& /*folder*/) override { return server_.MakeDatabase(); }
    std::string Copy(const std::string& other, const fs::path& /*folder*/) override {
        const std::string made = server_.CopyDatabase(other);
        FollowTheWorld(made);
        return made;
    }
    void Forget(const std::string& database) override {
        server_.DropDatabase(database);
        fs::remove(ClockOf(database));
    }
    void FollowTheWorld(const std::string& database) override {
        std::string sql = kWorldsTime;
        sql.replace(sql.find('%', sql.find("file(")), 1, ClockOf(database).string());
        OwnPostgres::Ask(database, sql);
    }
    void Show(const std::string& database) override {
        setenv(kDatabaseVariable, database.c_str(), 1);
        setenv("PAGERFWD_STATE", fs::current_path().c_str(), 1);
        setenv("PAGERSIM_SHOWN_CLOCK", ClockOf(database).c_str(), 1);
    }

 private:
    // Where the server, another user, may read it.
    fs::path ClockOf(const std::string& database) const {
        return server_.Folder() / ("clock-of-" + OwnPostgres::NameOnServer(database));
    }

    OwnPostgres server_;
};

}  // namespace

std::unique_ptr<SiteDatabases> OpenPostgresDatabases() {
    return std::make_unique<Databases>();
}

}  // namespace proof
