// Looking at a database: with the right to read alone, and without leaving anything beside it.
//
//   const auto alarms = host::Look("site.db", [](host::Connection& database) {
//       return host::LastAlarms(database, 20);
//   });
//
// Errors     StoreError.
#ifndef PAGERFWD_HOST_STORE_LOOK_H
#define PAGERFWD_HOST_STORE_LOOK_H

#include <ctime>
#include <optional>
#include <string>

#include "host/store/connection.h"

namespace host {

// A connection for one look, and whether what was read by it can be trusted: a database that nobody
// has open is read without a lock, and somebody may come.
class Glance {
 public:
    explicit Glance(const std::string& path);

    // Before anything else. Throws when the file doesn't exist or holds none of our tables.
    void Open();
    Connection& Database() { return *connection_; }
    // From now on cells that are too large are seen as empty ones.
    void HideLargeCells();
    // Also where it could not be opened: who had it open last takes its journal away.
    bool WasDisturbed() const;

 private:
    // What differs from one state of the file to another.
    struct Stamp {
        timespec changed;
        int64_t size;
        bool has_journal;
    };
    static Stamp StampOf(const std::string& path);

    const std::string path_;
    const Stamp before_;
    std::optional<Connection> connection_;
    std::optional<Connection::AnyLength> any_length_;
};

// One bad row keeps nobody from seeing the others.
template <typename Read>
auto ReadBy(Glance& glance, Read& read) {
    try {
        return read(glance.Database());
    } catch (const RowTooLarge&) {
        glance.HideLargeCells();
        return read(glance.Database());
    }
}

// Reads as often as it is disturbed, within reason. `read` gets the connection.
template <typename Read>
auto Look(const std::string& path, Read read) {
    constexpr int kMostTries = 20;
    for (int tries = 1;; ++tries) {
        Glance glance(path);
        try {
            glance.Open();
            auto found = ReadBy(glance, read);
            if (!glance.WasDisturbed() || tries == kMostTries) {
                return found;
            }
        } catch (const StoreError&) {
            if (!glance.WasDisturbed() || tries == kMostTries) {
                throw;
            }
        }
    }
}

}  // namespace host

#endif
