#pragma once

#include <QtGlobal>

/// The number of the user's present gesture: it grows whenever a mouse button is released anywhere
/// in the application. Two edits with the same number may be steps of one drag.
///
/// Starts to listen at the first call for which an application object exists.
quint64 currentGesture();
