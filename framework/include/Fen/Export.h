/// @file
/// What the framework's shared library offers to others.
#pragma once

/// Marks it; everything else stays hidden inside the library.
#define FEN_API __attribute__((visibility("default")))

/// Marks the private operations of a class that is offered: they stay inside.
#define FEN_LOCAL __attribute__((visibility("hidden")))
