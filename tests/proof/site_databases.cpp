// Files. Used by kill_test.cpp, fault_test.cpp and site_soak.cpp.
#include "tests/proof/site_databases.h"

#include <cstdlib>
#include <stdexcept>

namespace proof {
namespace {

namespace fs = std::filesystem;

class Files final : public SiteDatabases {
 public:
    std::string Make(const fs::path& folder) override { return folder / "site.db"; }
    std::string Copy(const std::string& other, const fs::path& folder) override {
        const std::string made = Make(folder);
        fs::copy_file(other, made);
        return made;
    }
    void Forget(const std::string& /*database*/) override {}  // It goes with its folder.
    void FollowTheWorld(const std::string& /*database*/) override {}
    void Show(const std::string& database) override {
        setenv(kDatabaseVariable, database.c_str(), 1);
    }
};

}  // namespace

std::string SiteDatabase() {
    const char* const name = std::getenv(kDatabaseVariable);
    return name != nullptr ? name : "";
}

std::unique_ptr<SiteDatabases> OpenSiteDatabases(const std::string& kind) {
    if (kind == "sqlite") {
        return std::make_unique<Files>();
    }
    if (kind == "postgres") {
        return OpenPostgresDatabases();
    }
    throw std::runtime_error("no such kind of database: " + kind);
}

}  // namespace proof
