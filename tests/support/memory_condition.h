// The conditions of <pagerfwd/table_access.h>, read back from their text.
#ifndef PAGERFWD_TESTS_SUPPORT_MEMORY_CONDITION_H
#define PAGERFWD_TESTS_SUPPORT_MEMORY_CONDITION_H

#include <optional>
#include <string_view>

#include "tests/support/memory_table.h"

namespace test_support {

// Nothing unless the text is, from its first to its last character, one of the forms that occur
// for this table. A text with a double quote in it is in none of them.
std::optional<Condition> ParseCondition(std::string_view table, std::string_view text);

}  // namespace test_support

#endif
