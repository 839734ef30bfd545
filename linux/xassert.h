// The assertion of the portability classes.
//
// Active in every build type: a broken invariant in a string or a list must stop the process before
// a wrong page goes out, so this is not assert(), which NDEBUG takes away.
//
// Errors     On failure the standard assertion message goes to standard error and the process
//            aborts. Operators search logs for the condition's text and the unit's name, so both
//            are given by the caller exactly as they shall appear.
#ifndef PAGERFWD_LINUX_XASSERT_H
#define PAGERFWD_LINUX_XASSERT_H

// The C library's own, which <cassert> declares only where assert() is active.
extern "C" void __assert_fail(const char* condition, const char* unit, unsigned int line,
                              const char* function) noexcept __attribute__((noreturn));

// cond appears in the message as it is written; unit is "./XString", "./XList", ...
#define XASSERT_IN(unit, function, cond) \
    (static_cast<bool>(cond) ? void(0) : __assert_fail(#cond, unit, __LINE__, function))

#define XASSERT(unit, cond) XASSERT_IN(unit, __PRETTY_FUNCTION__, cond)

#endif
