/// Marks what the shared library offers to others; everything else stays hidden inside it.
#pragma once

#define KELDABASE_API __attribute__((visibility("default")))
