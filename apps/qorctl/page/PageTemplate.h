// data/page, put together when this program is built (cmake/EmbedPage.cmake): styles and script
// inside, and a Content-Security-Policy that allows these two and nothing else.
#ifndef QORCTL_PAGE_PAGETEMPLATE_H
#define QORCTL_PAGE_PAGETEMPLATE_H

#include <string_view>

namespace qorctl {

extern const std::string_view PAGE_TEMPLATE;

}  // namespace qorctl

#endif  // QORCTL_PAGE_PAGETEMPLATE_H
