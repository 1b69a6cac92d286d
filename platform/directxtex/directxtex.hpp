// The front door: the DirectXTex interface, from the real library (ZAB_DIRECTXTEX=system) or from this folder. Callers
// are written once and build against either.
#pragma once

#ifdef ZAB_SYSTEM_DIRECTXTEX
#include <DirectXTex.h>
#else
#include "platform/directxtex/operations.hpp"
#endif

// What the library expects of Windows around it, where there is no Windows.
#include "platform/directxtex/windows_calls.hpp"
