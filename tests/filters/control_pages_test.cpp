// The control pages as a user meets them, in the host's entry.

#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QApplication>
#include <QSignalBlocker>
#include <QSlider>
#include <QTest>
#include <QTranslator>
#include <limits>
#include <map>
#include <set>

#include "host/kernel/KernelNotifier.h"
#include "host/kernel/KernelStore.h"
#include "tests/kit/ExpectedFilters.h"
#include "tests/kit/FilterHost.h"
#include "tests/kit/gestures.h"

using testing::ElementsAre;
using testing::Pair;

namespace {

/// Translates nothing and notes what was to be translated, by context.
class ContextRecorder : public QTranslator {
public:
    ContextRecorder() {
        QCoreApplication::installTranslator(this);
        noted.clear();  // the application asks for its layout direction
    }
    ~ContextRecorder() override { QCoreApplication::removeTranslator(this); }
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override {
        noted[context].insert(text);
        return QString();
    }
    mutable std::map<std::string, std::set<std::string>> noted;
};

class ControlPage : public testing::TestWithParam<ExpectedFilter> {};

}  // namespace

TEST_P(ControlPage, TranslatesItsTextsInTheContextOfItsForm) {
    FilterHost host(GetParam().key);
    ContextRecorder recorder;
    const QWidget* page = host.manipulator->createFilterGui(&host.entry());
    std::set<std::string> texts = {"Form2"};
    QList<const QWidget*> widgets = {page};
    for (const QWidget* widget : page->findChildren<QWidget*>()) widgets.append(widget);
    for (const QWidget* widget : widgets)
        for (const char* property : {"text", "toolTip", "whatsThis"})
            texts.insert(widget->property(property).toString().toStdString());
    texts.erase("");
    const std::string form = page->metaObject()->className() + std::string("Data");
    EXPECT_THAT(recorder.noted, ElementsAre(Pair(form, texts)));

    recorder.noted.clear();
    texts = {host.manipulator->filterTitle().toStdString(),
             host.manipulator->filterDescription().toStdString()};
    EXPECT_THAT(recorder.noted, ElementsAre(Pair(GetParam().className, texts)));
}

TEST_P(ControlPage, EverySliderPositionSurvivesStoringAndShowing) {
    FilterHost host(GetParam().key);
    for (QSlider* control : host.page().findChildren<QSlider*>()) {
        for (int position = control->minimum(); position <= control->maximum(); ++position) {
            control->setValue(position);
            {
                const QSignalBlocker quiet(control);
                control->setValue(position == control->minimum() ? control->maximum()
                                                                 : control->minimum());
            }
            KernelStore::instance().announceMediaLoaded();
            ASSERT_EQ(control->value(), position) << control->objectName().toStdString();
        }
    }
}

TEST_P(ControlPage, OneGestureIsOneUndoStep) {
    FilterHost host(GetParam().key);
    QApplication::setStyle("windows");  // others paint on threads of the toolkit's own
    host.entry().resize(300, 160);
    host.entry().show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&host.entry()));
    int edits = 0;
    QObject::connect(KernelNotifier::instance(), &KernelNotifier::objectChanged,
                     host.manipulator.get(), [&edits] { ++edits; });
    int steps = 0;
    for (QSlider* control : host.page().findChildren<QSlider*>()) {
        SCOPED_TRACE(control->objectName().toStdString());
        for (int i = 0; i < 2; ++i) {
            const int start = control->value();
            edits = 0;
            // By its handle over the length of its groove, a quarter at a time.
            const QPoint handle = handleAt(*control, start);
            const int way =
                handle.x() < control->width() / 2 ? control->width() : -control->width();
            drag(*control, handle, handle + QPoint(way, 0), 4);
            EXPECT_NE(control->value(), start);
            // Deconvolution is too slow to follow the mouse.
            EXPECT_EQ(edits > 1, GetParam().key != std::string("Degauss"));
            EXPECT_EQ(host.undo.count(), ++steps);
        }
        QTest::mouseClick(&host.entry(), Qt::LeftButton);  // ends the gesture
        const Qt::Key key = control->value() > control->minimum() ? Qt::Key_Left : Qt::Key_Right;
        edits = 0;
        for (int i = 0; i < 3; ++i) QTest::keyClick(control, key);
        EXPECT_EQ(edits, 3);
        EXPECT_EQ(host.undo.count(), ++steps);
    }
}

INSTANTIATE_TEST_SUITE_P(Filters, ControlPage, testing::ValuesIn(expectedFilters()),
                         [](const auto& row) { return std::string(row.param.className); });

// What the pages show of stored values

namespace {

const char kSep[] = "Channel separation";
const char kBlur[] = "Blur and enhance";
const char kThreshold[] = "Adaptive threshold";
const char kDegauss[] = "Degauss";
const char kDistance[] = "Object separator";

}  // namespace

TEST(ControlPageValues, AreShownAsStored) {
    // A filter's rows in this order, each on the page as the one before has left it.
    const struct {
        const char* filter;
        int parameter;
        QVariant stored;
        const char* control;
        int position;
    } rows[] = {
        {kSep, 1, 1, "R", 1},
        {kSep, 1, 2, "G", 1},
        {kSep, 1, 3, "B", 1},
        {kSep, 1, 4, "H", 1},
        {kSep, 1, 5, "L", 1},
        {kSep, 1, 6, "S", 1},
        {kSep, 1, 0, "S", 1},  // an unknown channel leaves the buttons as they are
        {kSep, 1, 7, "S", 1},
        {kBlur, 2, 99, "theSlBlur", 13},
        {kBlur, 2, -4, "theSlBlur", 1},
        {kThreshold, 1, 24, "theSlSize", 11},
        {kThreshold, 1, 5, "theSlSize", 5},  // less than the slider can show
        {kThreshold, 1, 257, "theSlSize", 50},
        {kThreshold, 1, std::numeric_limits<int>::min(), "theSlSize", 5},
        {kThreshold, 2, 12.89, "theSlMin", 128},
        {kThreshold, 2, 25.56, "theSlMin", 255},
        {kThreshold, 2, -0.19, "theSlMin", 0},
        {kThreshold, 2, 1e300, "theSlMin", 255},
        {kThreshold, 2, 12.8, "theSlMin", 128},
        {"Open_Close", 1, 14, "theSlOpen", 13},
        {"Open_Close", 1, -14, "theSlOpen", -13},
        {"Dilate_Erode", 1, -7, "theSlDilate", -7},
        {kDegauss, 1, 16, "theSlThresh", 15},
        {kDegauss, 2, 0, "FFT", 1},
        {kDegauss, 2, 2, "FFT", 1},  // an unknown method leaves the buttons as they are
        {kDegauss, 2, 1, "LR", 1},
        {kDistance, 1, 1, "Borders only", 1},
        {kDistance, 1, 0, "Filled", 1},
        {kDistance, 1, 3, "Borders only", 1},  // its lowest bit counts
        {kDistance, 1, 2, "Filled", 1},
        {kDistance, 2, 101, "theSlDetails", 100},
        {kDistance, 2, 10, "theSlDetails", 10},
    };
    std::map<std::string, FilterHost> hosts;
    for (const auto& row : rows) {
        FilterHost& host = hosts.try_emplace(row.filter, row.filter).first->second;
        host.set(row.parameter, row.stored);
        EXPECT_EQ(host.position(row.control), row.position)
            << row.filter << ": " << row.stored.toString().toStdString() << " on " << row.control;
        EXPECT_EQ(host.undo.count(), 0);
        EXPECT_EQ(host.value(row.parameter), row.stored);
    }
}

TEST(ControlPageValues, TouchingTheThresholdStoresASizeOfThePage) {
    FilterHost host(kThreshold);
    host.edit("theSlMin", 129);
    EXPECT_EQ(host.value(1), QVariant(11));
    EXPECT_EQ(host.value(2), QVariant(12.9));
}

TEST(ControlPageValues, NoChannelButtonCheckedIsChannel0) {
    FilterHost host(kSep);
    auto& lightness = dynamic_cast<QAbstractButton&>(host.control("L"));
    lightness.setAutoExclusive(false);
    lightness.setChecked(false);
    host.edit("Invert", 1);
    EXPECT_EQ(host.value(1), QVariant(0));
    EXPECT_EQ(host.value(2), QVariant(true));
}
