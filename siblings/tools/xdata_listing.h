#pragma once
// Extended data in words.
#include "host/base/resbuf.h"

/// A line for each record of a chain as KvDbObject::xData gives it, under the name of its application: code,
/// kind, value; indented inside braces. Of long chunks just the beginning is shown. Empty for null.
CString formatXData(const resbuf* chain);
