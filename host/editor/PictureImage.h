#pragma once

#include <QImage>

#include "host/editor/Preview.h"

namespace editor {

/// The picture as the toolkit draws it: it shows the same pixels, none is copied, and keeps the
/// picture alive. Null for no picture.
QImage imageOf(const Picture& picture);

}  // namespace editor
