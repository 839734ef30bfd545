// What somebody may have meant who wrote a word that isn't known.
#ifndef PAGERFWD_HOST_CLI_SUGGESTION_H
#define PAGERFWD_HOST_CLI_SUGGESTION_H

#include <string>
#include <string_view>
#include <vector>

namespace host {

// The known word that is nearest to the one that was written, where a slip or two of the fingers
// explain it: a letter too many, too few, another one, or two that changed places. Empty: none.
std::string NearestWord(std::string_view written, const std::vector<std::string>& known);

}  // namespace host

#endif
