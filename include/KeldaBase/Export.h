/// @file
/// What the shared library offers to others.
#pragma once

/// Marks it; everything else stays hidden inside the library.
#define KELDABASE_API __attribute__((visibility("default")))

/// Marks the private operations of a class that is offered: they stay inside.
#define KELDABASE_LOCAL __attribute__((visibility("hidden")))
