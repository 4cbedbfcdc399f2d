#pragma once
// Diagnostics for developers. They go to the sink of the services in force, by default to the standard error
// stream where $KORVANE_DEBUG is set, otherwise nowhere.
#include <string_view>

namespace platform {

/// One line; a line end is added by the sink.
void debugOutput(std::wstring_view text);

}  // namespace platform
