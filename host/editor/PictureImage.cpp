#include "host/editor/PictureImage.h"

#include "host/document/PictureImage.h"

namespace editor {

QImage imageOf(const Picture& picture) {
    if (!picture) return QImage();
    const QImage image = document::imageOf(*picture);
    if (image.constBits() != picture->data) return image;
    return QImage(
        static_cast<const uchar*>(picture->data), image.width(), image.height(), picture->step,
        image.format(), [](void* owner) { delete static_cast<Picture*>(owner); },
        new Picture(picture));
}

}  // namespace editor
