#pragma once

#include <QtGlobal>

/// Marks what the imaging library offers to others.
#if defined(IMAGEPROCESSOR_LIBRARY)
#define IMAGEPROCESSOR_EXPORT Q_DECL_EXPORT
#else
#define IMAGEPROCESSOR_EXPORT Q_DECL_IMPORT
#endif
