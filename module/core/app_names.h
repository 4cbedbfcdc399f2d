#pragma once
// The 50 names under which the product keeps extended data in drawings. The order is a stored contract.
#include "module/core/export.h"
#include "platform/text/cstring.h"

/// Number of an application name, 1 to 50.
using IM_APPLICATION = int;
inline constexpr IM_APPLICATION kApplicationCount = 50;

/// With this bit IM_GetAppName doesn't register the name.
inline constexpr unsigned int kAppNameUnregistered = 2;

/// The name, registered in the working drawing's application table when it was missing there. Empty for a
/// number outside 1 to 50 and when the name could not be registered.
MEK_API CString IM_GetAppName(IM_APPLICATION app, unsigned int flags);
/// Marks the working drawing as unchanged.
MEK_API void IM_SetDbModZero();
