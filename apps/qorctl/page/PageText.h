// Texts of the RAID tool, and of anybody's files, inside an HTML document: they are shown, and mean
// nothing to a browser.
#ifndef QORCTL_PAGE_PAGETEXT_H
#define QORCTL_PAGE_PAGETEXT_H

#include <string>
#include <string_view>

namespace qorctl {

// The text as content of an element, or as the value of an attribute in quotes. What is not
// printable is made visible, as on a terminal.
std::string HtmlText(std::string_view text);

// A valid JSON text as content of a <script type="application/json">: the same values without
// blanks and without a byte order mark; "<", ">", "&" and the two line ends that JavaScript knows
// beside those of JSON are escaped, "\u003c".
std::string ScriptJson(std::string_view json);

}  // namespace qorctl

#endif  // QORCTL_PAGE_PAGETEXT_H
