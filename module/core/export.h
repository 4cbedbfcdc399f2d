#pragma once
// Marks what the module exports. Everything else stays inside.
#define MEK_API __attribute__((visibility("default")))
