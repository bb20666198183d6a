#pragma once

#include <QtGlobal>

#include "framework/contract/FxKernelApi/FxKernelApiGlobal.h"

/// The number of the user's present gesture; edits with the same number may be one step of undo.
///
/// A gesture begins with the press of a mouse button, or with a key unless it is one more in a row
/// of keys. It ends when the release of the button was delivered, with a change of focus, when an
/// edit is undone, and after a second in which nothing was edited, typed, dragged or turned.
///
/// Starts to listen at the first call for which an application object exists. GUI thread.
quint64 currentGesture();

/// The next edit belongs to another gesture.
void endGesture();

/// Where the time comes from, in milliseconds; null for the real one. For tests.
FXKERNELAPI_EXPORT void setGestureClock(qint64 (*milliseconds)());
