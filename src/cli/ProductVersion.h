#ifndef QOR_CLI_PRODUCTVERSION_H
#define QOR_CLI_PRODUCTVERSION_H

#include <istream>
#include <string>

// The version in what "krzcli -v" prints: what follows the colon and one more character in the
// first line with "Product Version"; empty without such a line. Throws std::out_of_range if that
// line ends at its colon.
std::string ReadProductVersion(std::istream& output);

#endif  // QOR_CLI_PRODUCTVERSION_H
