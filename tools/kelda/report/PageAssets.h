// The page of a report as it was built into the program.
#pragma once

#include <string_view>

namespace KeldaTool {

struct PageAssets {
    std::string_view
        page; ///< HTML with "{{title}}", "{{csp}}", "{{style}}", "{{script}}", "{{data}}"
    std::string_view style;
    std::string_view script;
    std::string_view styleSha256; ///< of exactly these bytes, in hexadecimal digits
    std::string_view scriptSha256;
};

/// What EmbedPage.cmake made of the files beside it.
PageAssets const& builtInPage();

} // namespace KeldaTool
