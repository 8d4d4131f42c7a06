// Words of a command line in a message.
#ifndef QOR_QUOTED_H
#define QOR_QUOTED_H

#include <string>
#include <string_view>
#include <vector>

namespace qorapps {

// In quotation marks, on one line, and cut where it is long. What a terminal would obey is left to
// those who write the message.
std::string Quoted(std::string_view word);

// The same, but short words stand without the marks.
std::string Shown(std::string_view word);

// The one of `names` that a mistyped `word` most likely means, whatever hyphens stand in front;
// "" when it is near none.
std::string NearestName(const std::string& word, const std::vector<std::string>& names);

// "raid, storage, drive"
std::string Listed(const std::vector<std::string>& names);

}  // namespace qorapps

#endif  // QOR_QUOTED_H
