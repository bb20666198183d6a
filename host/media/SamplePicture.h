#pragma once

#include <QImage>

namespace media {

/// The demonstration's picture, 640 x 480 RGB, the same on every run. Each part shows what one of
/// the filters is for: bright discs on black that touch (separation, morphology), a rainbow
/// (channels), small text under uneven light (adaptive threshold), a soft star and stripes
/// (sharpening), grain and specks (blur, open and close). Needs a QGuiApplication.
QImage samplePicture();

}  // namespace media
