#include "host/document/PictureImage.h"

#include <cstddef>

namespace document {

QImage imageOf(const HkImage& picture) {
    const auto shown = [&picture](QImage::Format format) {
        const uchar* pixels = picture.data;  // const: the image is never written to
        return QImage(pixels, picture.roiWidth, picture.roiHeight, picture.step, format);
    };
    if (!picture.data) return QImage();
    switch (picture.channels) {
        case 1:
            return shown(QImage::Format_Grayscale8);
        case 3:
            return shown(QImage::Format_RGB888);
        case 4:
            return shown(QImage::Format_RGBA8888);
        default:
            break;
    }
    QImage image(picture.roiWidth, picture.roiHeight, QImage::Format_RGBA8888);
    for (int y = 0; y < image.height(); ++y) {
        const uchar* in = picture.data + static_cast<std::ptrdiff_t>(picture.step) * y;
        uchar* out = image.scanLine(y);
        for (int x = 0; x < image.width(); ++x, in += 2, out += 4) {
            out[0] = out[1] = out[2] = in[0];
            out[3] = in[1];
        }
    }
    return image;
}

}  // namespace document
