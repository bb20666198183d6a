// Compiled once per faulty library, with FAULT naming its fault.
#include "tests/host/plugins/Fault.h"

const Fault kFault = Fault::FAULT;

extern "C" {

__attribute__((visibility("default"))) const char* qt_plugin_query_verification_data() {
    if constexpr (Fault::FAULT == Fault::MissingFunction) functionThatIsNowhere();
    return verificationText();
}

__attribute__((visibility("default"))) QObject* qt_plugin_instance() {
    return rootObject();
}
}
