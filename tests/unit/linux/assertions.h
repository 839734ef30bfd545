// Expecting the assertions of the portability classes.
#ifndef PAGERFWD_TESTS_UNIT_LINUX_ASSERTIONS_H
#define PAGERFWD_TESTS_UNIT_LINUX_ASSERTIONS_H

#include <gmock/gmock.h>

// The statement ends the process with the standard message, naming unit and condition.
#define EXPECT_ASSERTION(statement, unit, condition)               \
    EXPECT_DEATH(statement,                                        \
                 testing::AllOf(testing::HasSubstr(": " unit ":"), \
                                testing::HasSubstr(": Assertion `" condition "' failed.")))

#endif
