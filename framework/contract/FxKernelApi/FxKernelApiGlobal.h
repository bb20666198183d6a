#pragma once

#include <QtGlobal>

/// Marks what the kernel library offers to others.
#if defined(FXKERNELAPI_LIBRARY)
#define FXKERNELAPI_EXPORT Q_DECL_EXPORT
#else
#define FXKERNELAPI_EXPORT Q_DECL_IMPORT
#endif

// The host was written for a compiler that knows this type; frame numbers carry it in every
// signature.
#if !defined(_MSC_VER)
typedef qint64 __int64;
#endif
