#include "host/editor/PictureImage.h"

namespace editor {

QImage imageOf(const Picture& picture) {
    if (!picture || !picture->data) return QImage();
    const auto wrap = [&](const Picture& kept, QImage::Format format) {
        return QImage(
            static_cast<const uchar*>(kept->data), kept->roiWidth, kept->roiHeight, kept->step,
            format, [](void* owner) { delete static_cast<Picture*>(owner); }, new Picture(kept));
    };
    switch (picture->channels) {
        case 1:
            return wrap(picture, QImage::Format_Grayscale8);
        case 3:
            return wrap(picture, QImage::Format_RGB888);
        case 4:
            return wrap(picture, QImage::Format_RGBA8888);
        default:
            break;
    }
    // Grey with alpha has no format of its own.
    QImage image(picture->roiWidth, picture->roiHeight, QImage::Format_RGBA8888);
    for (int y = 0; y < image.height(); ++y) {
        const uchar* in = picture->data + static_cast<std::ptrdiff_t>(y) * picture->step;
        uchar* out = image.scanLine(y);
        for (int x = 0; x < image.width(); ++x, in += 2, out += 4) {
            out[0] = out[1] = out[2] = in[0];
            out[3] = in[1];
        }
    }
    return image;
}

}  // namespace editor
