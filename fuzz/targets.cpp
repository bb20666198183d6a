#include "fuzz/targets.h"

namespace fuzz {

const std::vector<Target>& targets() {
    static const std::vector<Target> table = {
        {"project", project},
        {"filter_text", filterText},
        {"frame_list", frameList},
        {"picture", picture},
        {"command_line", commandLine},
        {"elementwise", elementwise},
        {"distance", distance},
        {"labels", labels},
        {"watershed", watershed},
        {"peak_step", peakStep},
        {"deconv_fft", deconvFFT},
        {"deconv_lr", deconvLR},
        {"chain", chain},
        {"store", store},
    };
    return table;
}

}  // namespace fuzz
