/// @file
/// What the shared library offers to others.
#pragma once

/// Marks it; everything else stays hidden inside the library.
#define KELDABASE_API __attribute__((visibility("default")))
