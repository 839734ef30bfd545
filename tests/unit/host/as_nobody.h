// A while as a user without privileges: as nobody for root, as themselves for all others.
#ifndef PAGERFWD_TESTS_UNIT_HOST_AS_NOBODY_H
#define PAGERFWD_TESTS_UNIT_HOST_AS_NOBODY_H

#include <grp.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

inline constexpr uid_t kNobody = 65534;

class AsNobody {
 public:
    // Root's nobody is a member of this group, too.
    explicit AsNobody(gid_t group = kNobody)
        : before_(static_cast<size_t>(getgroups(0, nullptr))), was_root_(geteuid() == 0) {
        static_cast<void>(getgroups(static_cast<int>(before_.size()), before_.data()));
        Require(setgroups(1, &group) == 0 && setegid(kNobody) == 0 && seteuid(kNobody) == 0);
    }
    ~AsNobody() {
        Require(seteuid(0) == 0 && setegid(0) == 0 &&
                setgroups(before_.size(), before_.data()) == 0);
    }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

 private:
    // All that follows would fail for it.
    void Require(bool done) const {
        if (was_root_ && !done) {
            std::abort();
        }
    }

    std::vector<gid_t> before_;
    const bool was_root_;
};

#endif
