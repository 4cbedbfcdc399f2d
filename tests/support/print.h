#pragma once
// Lets GoogleTest show the product's texts.
#include <ostream>

#include "platform/text/cstring.h"

template <class Ch>
void PrintTo(const CStringT<Ch>& text, std::ostream* out) {
  if constexpr (sizeof(Ch) == 1)
    *out << '"' << text.GetString() << '"';
  else
    *out << "L\"" << platform::utf8From(text) << '"';
}
