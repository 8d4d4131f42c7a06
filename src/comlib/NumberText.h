// Reading numbers from text, the same in every locale.
#ifndef QOR_COMLIB_NUMBERTEXT_H
#define QOR_COMLIB_NUMBERTEXT_H

#include <string_view>

namespace comlib {

// The leading decimal number of `text`, as CStringUtil::TStringToNumber documents it.
long LeadingNumber(std::string_view text);

}  // namespace comlib

#endif  // QOR_COMLIB_NUMBERTEXT_H
