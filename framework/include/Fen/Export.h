/// Marks what the framework's shared library offers to others; everything else stays hidden inside
/// it.
#pragma once

#define FEN_API __attribute__((visibility("default")))
