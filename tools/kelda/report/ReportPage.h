// The web page of a report: one file that needs no other.
#pragma once

#include <string>
#include <string_view>

#include "report/PageAssets.h"

namespace KeldaTool {

/// The page with everything put in its places. `title` is any bytes; `data` is a JSON document that
/// can stand within a script element, as CompactJson writes it. What is put in is not looked at for
/// places once more, and a place of another name stays as it is.
std::string reportPage(PageAssets const& assets, std::string_view title, std::string_view data);

/// What the page may do: show this style and run this script, and nothing from elsewhere.
std::string contentSecurityPolicy(PageAssets const& assets);

/// Text for HTML, between tags and in attributes; bytes that are not UTF-8, and characters that
/// HTML has not, are replaced.
std::string htmlText(std::string_view bytes);

/// The bytes that pairs of hexadecimal digits stand for, in base 64.
std::string base64OfHex(std::string_view digits);

} // namespace KeldaTool
