#include "host/kernel/KernelNotifier.h"

KernelNotifier* KernelNotifier::instance() {
    // Never destroyed: manipulators and widgets that outlive main() may still disconnect from it.
    static KernelNotifier* const notifier = new KernelNotifier;
    return notifier;
}
