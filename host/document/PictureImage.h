#pragma once

#include <QImage>
#include <memory>

#include "framework/contract/ImageProcessor/HkImage.h"

namespace document {

/// The region as the toolkit draws it. It shows the picture's own pixels, which must outlive it,
/// unless there is no such format in the toolkit (grey with alpha). Null for no picture.
QImage imageOf(const HkImage& picture);

/// The same, keeping the picture alive as long as it is shown.
QImage imageOf(const std::shared_ptr<const HkImage>& picture);

}  // namespace document
