// Where the sites of a proof have their tables: each a file of its own, or a database on a
// PostgreSQL server of the proof's own.
//
// The server is no part of the simulated world, and needn't be: time stands still while it is
// asked, so its answers, its locks and its limits are those of real time, and take none of the
// world's. Only what it says of the time of day must be the world's, since leases are taken and
// lost by it. A site asks for that by one function of its own, Host_Now(), which is replaced here
// by one that reads the page of memory in which the world keeps its clock. (A server that is
// started under a preload would have its limits and pauses by the world's clock as well, which
// stands still just then.)
//
// Errors     std::runtime_error.
#ifndef PAGERFWD_TESTS_PROOF_SITE_DATABASES_H
#define PAGERFWD_TESTS_PROOF_SITE_DATABASES_H

#include <filesystem>
#include <memory>
#include <string>

namespace proof {

// Which a process of a world has, as pagerfwd takes it.
constexpr const char* kDatabaseVariable = "PAGERFWD_DATABASE";
std::string SiteDatabase();

class SiteDatabases {
 public:
    SiteDatabases() = default;
    virtual ~SiteDatabases() = default;
    SiteDatabases(const SiteDatabases&) = delete;
    SiteDatabases& operator=(const SiteDatabases&) = delete;

    // An empty one, for a site whose processes run in this folder. Its name.
    virtual std::string Make(const std::filesystem::path& folder) = 0;
    // The same with all that is in another, which nobody uses.
    virtual std::string Copy(const std::string& other, const std::filesystem::path& folder) = 0;
    virtual void Forget(const std::string& database) = 0;

    // Behind the making of its tables: from now on its time is that of the world that it is used
    // in.
    virtual void FollowTheWorld(const std::string& database) = 0;
    // In the environment of a process that becomes that of a world, in the folder of the site.
    virtual void Show(const std::string& database) = 0;
};

// kind: "sqlite" or "postgres".
std::unique_ptr<SiteDatabases> OpenSiteDatabases(const std::string& kind);

// Where a build has libpq; else it throws.
std::unique_ptr<SiteDatabases> OpenPostgresDatabases();

}  // namespace proof

#endif
