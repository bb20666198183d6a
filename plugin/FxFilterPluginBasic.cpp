#include "plugin/FxFilterPluginBasic.h"

#include <new>

#include "filters/adaptthresh/FxFilterManipAdaptTresh.h"
#include "filters/blur/FxFilterManipBlur.h"
#include "filters/chansep/FxFilterManipSep.h"
#include "filters/degauss/FxFilterManipDegauss.h"
#include "filters/dilate/FxFilterManipDilate.h"
#include "filters/distance/FxFilterManipDistance.h"
#include "filters/open/FxFilterManipOpen.h"

namespace {

template <class Manipulator>
HkFilterManipulator* make(QObject* parent) {
    return new Manipulator(parent);
}

struct FactoryRow {
    const char* key;
    HkFilterManipulator* (*make)(QObject* parent);
};

/// In the order in which keys are listed and compared.
const FactoryRow kFactory[] = {
    {"Channel separation", make<FxFilterManipSep>},
    {"Blur and enhance", make<FxFilterManipBlur>},
    {"Adaptive threshold", make<FxFilterManipAdaptTresh>},
    {"Dilate_Erode", make<FxFilterManipDilate>},
    {"Open_Close", make<FxFilterManipOpen>},
    {"Degauss", make<FxFilterManipDegauss>},
    {"Object separator", make<FxFilterManipDistance>},
};

}  // namespace

QStringList FxFilterPluginBasic::keys() {
    QStringList keys;
    for (const FactoryRow& row : kFactory) keys.append(QString::fromLatin1(row.key));
    return keys;
}

bool FxFilterPluginBasic::create(const QString& key, HkFilterManipulator*& manipulator,
                                 QObject* parent) {
    manipulator = nullptr;
    for (const FactoryRow& row : kFactory) {
        if (key != QLatin1String(row.key)) continue;
        try {
            manipulator = row.make(parent);
        } catch (const std::bad_alloc&) {
            // The host tells a filter it lacks memory for from one that does not exist: true, and
            // no manipulator.
        }
        return true;
    }
    return false;
}
