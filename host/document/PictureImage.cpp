#include "host/document/PictureImage.h"

#include <cstddef>

namespace document {

namespace {

using Owner = std::shared_ptr<const HkImage>;

/// owner: kept until the last copy of the image is gone, or null.
QImage shown(const HkImage& picture, QImage::Format format, const Owner& owner) {
    const uchar* pixels = picture.data;  // const: the image is never written to
    const QImageCleanupFunction release = [](void* kept) { delete static_cast<Owner*>(kept); };
    return QImage(pixels, picture.roiWidth, picture.roiHeight, picture.step, format,
                  owner ? release : nullptr, owner ? new Owner(owner) : nullptr);
}

QImage imageOf(const HkImage& picture, const Owner& owner) {
    if (!picture.data) return QImage();
    switch (picture.channels) {
        case 1:
            return shown(picture, QImage::Format_Grayscale8, owner);
        case 3:
            return shown(picture, QImage::Format_RGB888, owner);
        case 4:
            return shown(picture, QImage::Format_RGBA8888, owner);
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

}  // namespace

QImage imageOf(const HkImage& picture) {
    return imageOf(picture, nullptr);
}

QImage imageOf(const std::shared_ptr<const HkImage>& picture) {
    return picture ? imageOf(*picture, picture) : QImage();
}

}  // namespace document
