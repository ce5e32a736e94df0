// The difference between a text and its layout, as patch(1) takes it.
#pragma once

#include <string>
#include <string_view>

namespace KeldaTool {

/// A unified diff with three lines of context, under this name; empty if the texts are the same.
/// It is right for any two texts, and short where lines differ in blanks and in case only or where
/// blank lines come and go. Takes time in proportion to the texts.
std::string unifiedDiff(std::string_view name, std::string_view before, std::string_view after);

} // namespace KeldaTool
