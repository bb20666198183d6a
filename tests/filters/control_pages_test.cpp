// The control pages as a user meets them, in the host's entry.

#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QApplication>
#include <QGridLayout>
#include <QMetaEnum>
#include <QMetaProperty>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyleOptionSlider>
#include <QTest>
#include <QTranslator>
#include <map>
#include <set>

#include "host/kernel/KernelNotifier.h"
#include "host/kernel/KernelStore.h"
#include "tests/framework/ExpectedFilters.h"
#include "tests/framework/FilterHost.h"

using testing::ElementsAre;
using testing::Pair;

namespace {

/// A page in words. The first line is the form, the second the group that holds the controls, with
/// the spacing and the margin of its layout; then come the controls: class, place as "layout
/// row,column rows x columns" or "layout index", and properties. An indented line continues the one
/// before.
struct PageRow {
    const char* filter;
    const char* manipulator;
    const char* text;
};

const PageRow kPages[] = {
    {"Channel separation", "FxFilterManipSep", R"(
FxGuiChannelSepData
theBGButtons 4 2
theRBLightness QRadioButton gridLayout1 0,0 1x1 | text=L | checked=true
theRBSaturation QRadioButton gridLayout1 0,1 1x1 | text=S | checked=false
theRBHue QRadioButton gridLayout1 0,2 1x1 | text=H | checked=false
theRBRed QRadioButton gridLayout1 1,0 1x1 | text=R | checked=false
theRBGreen QRadioButton gridLayout1 1,1 1x1 | text=G | checked=false
theRBBlue QRadioButton gridLayout1 1,2 1x1 | text=B | checked=false
theChBInvert QCheckBox gridLayout1 0,4 2x1 | text=Invert | checked=false)"},

    {"Blur and enhance", "FxFilterManipBlur", R"(
FxGuiBlurData | sizePolicy=Preferred/Preferred | size=230x34
theBGButtons 4 4 | sizePolicy=Preferred+2/Maximum
textLabel1 QLabel hboxLayout 0 | text=Blur | alignment=Right VCenter | wordWrap=false
  | minimumSize=0x0 | sizePolicy=Minimum/Preferred
theSlBlur QSlider hboxLayout 1 | minimum=1 | maximum=13 | singleStep=1 | pageStep=1 | value=1
  | orientation=Horizontal | tickPosition=TicksAbove | tickInterval=0 | minimumSize=100x21
  | sizePolicy=MinimumExpanding/Maximum | toolTip=Blurs an image | whatsThis=Blurs an image
theChbMaxFilter QCheckBox hboxLayout 2 | text=Enhance | checked=false | sizePolicy=Minimum/Fixed
  | toolTip=Enhances an image | whatsThis=Enhances an image using a 'maximum' filter.)"},

    {"Adaptive threshold", "FxFilterManipAdaptTresh", R"(
FxGuiAdaptTresholdData | sizePolicy=Preferred/Minimum | size=238x87
theBGAll 3 4
textLabel1_2 QLabel gridLayout1 0,0 1x1 | text=Area size | alignment=Right VCenter | wordWrap=false
  | minimumSize=0x0 | maximumSize=32767x32767
theSlSize QSlider gridLayout1 0,1 1x1 | minimum=5 | maximum=50 | singleStep=1 | pageStep=5 | value=5
  | orientation=Horizontal | tickPosition=TicksAbove | tickInterval=5 | minimumSize=0x21
  | toolTip=Threshold neighbourhood size
  | whatsThis=Sets the size of pixel neighbourhood used to calculate the threshold.
textLabel1_2_2 QLabel gridLayout1 1,0 1x1 | text=Min value | alignment=Right VCenter
  | wordWrap=false | minimumSize=0x0 | maximumSize=32767x32767
theSlMin QSlider gridLayout1 1,1 1x1 | minimum=0 | maximum=255 | singleStep=1 | pageStep=10
  | value=128 | orientation=Horizontal | tickPosition=TicksAbove | tickInterval=25
  | minimumSize=0x21 | toolTip=Minimal value for threshold
  | whatsThis=Sets the minimal pixel difference value used to calculate the threshold.)"},

    {"Open_Close", "FxFilterManipOpen", R"(
FxGuiOpenData | sizePolicy=Preferred/Preferred | size=238x58
theBGButtons 4 4 | sizePolicy=Preferred+2/Maximum
textLabel1_3 QLabel gridLayout1 0,0 1x1 | text=Open | alignment=Right VCenter | wordWrap=false
  | minimumSize=34x0
theSlOpen QSlider gridLayout1 0,1 1x1 | minimum=-13 | maximum=13 | singleStep=1 | pageStep=1
  | value=0 | orientation=Horizontal | tickPosition=TicksAbove | tickInterval=1 | minimumSize=0x21
  | sizePolicy=Minimum/Maximum | toolTip=Erodes and dilates an image
  | whatsThis=Erodes and dilates an image to open or close areas
textLabel1_3_2 QLabel gridLayout1 0,2 1x1 | text=Close | alignment=Left VCenter | wordWrap=false
  | minimumSize=34x0)"},

    {"Dilate_Erode", "FxFilterManipDilate", R"(
FxGuiDilateData | sizePolicy=Preferred/Preferred | size=238x58
theBGButtons 4 4 | sizePolicy=Preferred+2/Maximum
textLabel1_3 QLabel gridLayout1 0,0 1x1 | text=Dilate | alignment=Right VCenter | wordWrap=false
  | minimumSize=34x0
theSlDilate QSlider gridLayout1 0,1 1x1 | minimum=-13 | maximum=13 | singleStep=1 | pageStep=1
  | value=0 | orientation=Horizontal | tickPosition=TicksAbove | tickInterval=1 | minimumSize=0x21
  | sizePolicy=Minimum/Maximum | toolTip=Erodes or dilates an image
  | whatsThis=Erodes or dilates an image
textLabel1_3_2 QLabel gridLayout1 0,2 1x1 | text=Erode | alignment=Left VCenter | wordWrap=false
  | minimumSize=34x0)"},

    {"Degauss", "FxFilterManipDegauss", R"(
FxGuiDegaussData | toolTip=Sharpens an image | whatsThis=Sharpens an image by deconvolution.
theBGButtons 4 4 | exclusive=false
theRBMethodFFT QRadioButton gridLayout1 1,1 1x1 | text=FFT | checked=false
  | toolTip=FFT deconvolution | whatsThis=Uses FFT deconvolution algorithm.
theRBMethodLR QRadioButton gridLayout1 1,2 1x1 | text=LR | checked=true
  | toolTip=Lucy-Richardson deconvolution | whatsThis=Uses Lucy-Richardson deconvolution algorithm.
textLabel1 QLabel gridLayout1 0,0 1x1 | text=Amount | wordWrap=false
textLabel1_2 QLabel gridLayout1 1,0 1x1 | text=Method:
theSlThresh QSlider gridLayout1 0,1 1x3 | minimum=1 | maximum=15 | singleStep=1 | pageStep=2
  | value=2 | tracking=false | orientation=Horizontal | tickPosition=TicksAbove
  | minimumSize=100x21)"},

    {"Object separator", "FxFilterManipDistance", R"(
FxGuiDistanceData
theBGButtons 4 4 | exclusive=true | selectedId=1
theRbFilled QRadioButton gridLayout1 0,0 1x1 | text=Filled | checked=true
  | toolTip=Creates filled areas | whatsThis=Separated areas will be filled white.
theRbBorders QRadioButton gridLayout1 0,1 1x1 | text=Borders only | checked=false
  | toolTip=Creates area borders only.
  | whatsThis=Separated areas will be filled black with white borders.
textLabel1_2 QLabel hboxLayout 0 | text=Details
theSlDetails QSlider hboxLayout 1 | minimum=1 | maximum=100 | singleStep=2 | value=30
  | orientation=Horizontal | tickPosition=TicksBelow | tickInterval=5
  | toolTip=Level of segmentation.
  | whatsThis=Controls segmentation intensity. Bigger the value, more subregions may be created.)"},
};

void PrintTo(const PageRow& row, std::ostream* out) {
    *out << row.filter;
}

/// The lines of a page's text, each split at its bars: what it is first, then name=value.
std::vector<QStringList> linesOf(const PageRow& row) {
    std::vector<QStringList> lines;
    const QString text = QString::fromLatin1(row.text).trimmed().replace("\n  |", " |");
    for (const QString& line : text.split('\n')) lines.push_back(line.split(" | "));
    return lines;
}

QString policyName(QSizePolicy::Policy policy) {
    return QMetaEnum::fromType<QSizePolicy::Policy>().valueToKey(policy);
}

QString propertyText(const QObject& object, const QString& name) {
    const QVariant value = object.property(name.toLatin1());
    const int index = object.metaObject()->indexOfProperty(name.toLatin1());
    const QMetaProperty property = object.metaObject()->property(index);
    if (property.isFlagType()) {
        const QString side = value.toInt() & Qt::AlignRight ? "Right" : "Left";
        return side + (value.toInt() & Qt::AlignVCenter ? " VCenter" : "");
    }
    if (property.isEnumType()) return property.enumerator().valueToKey(value.toInt());
    if (value.userType() == QMetaType::QSize)
        return QString("%1x%2").arg(value.toSize().width()).arg(value.toSize().height());
    if (value.userType() != QMetaType::QSizePolicy) return value.toString();
    const auto policy = value.value<QSizePolicy>();
    const int stretch = policy.horizontalStretch();
    return policyName(policy.horizontalPolicy()) + (stretch ? QString("+%1").arg(stretch) : "") +
           "/" + policyName(policy.verticalPolicy());
}

/// The properties of `object` that the line names, written as the line writes them.
std::string described(const QObject& object, const QStringList& line) {
    QStringList text = line.mid(0, 1);
    for (const QString& property : line.mid(1)) {
        const QString name = property.section('=', 0, 0);
        text.append(name + "=" + propertyText(object, name));
    }
    return text.join(" | ").toStdString();
}

/// Where a widget stands in one of the page's layouts.
QString placeOf(const QWidget& page, QWidget* widget) {
    for (QLayout* layout : page.findChildren<QLayout*>()) {
        const int index = layout->indexOf(widget);
        if (index < 0) continue;
        const auto* grid = qobject_cast<QGridLayout*>(layout);
        if (!grid) return QString("%1 %2").arg(layout->objectName()).arg(index);
        int row = 0, column = 0, rows = 0, columns = 0;
        grid->getItemPosition(index, &row, &column, &rows, &columns);
        return QString("%1 %2,%3 %4x%5")
            .arg(layout->objectName())
            .arg(row)
            .arg(column)
            .arg(rows)
            .arg(columns);
    }
    return QString("nowhere");
}

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

class ControlPage : public testing::TestWithParam<PageRow> {};

}  // namespace

TEST_P(ControlPage, IsBuiltAsItsUsersKnowIt) {
    FilterHost host(GetParam().filter);
    // Straight from the filter: the host has not shown values on it yet.
    const QWidget* page = host.manipulator->createFilterGui(&host.entry());
    const std::vector<QStringList> lines = linesOf(GetParam());
    const QStringList& form = lines[0];
    EXPECT_EQ(page->parentWidget(), &host.entry());
    EXPECT_EQ(page->metaObject()->className() + QString("Data"), form[0]);
    EXPECT_EQ(page->objectName(), form[0]);
    EXPECT_EQ(page->windowTitle(), QString("Form2"));
    EXPECT_EQ(described(*page, form), form.join(" | ").toStdString());
    const auto* grid = qobject_cast<QGridLayout*>(page->layout());
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->objectName(), QString("gridLayout"));
    EXPECT_EQ(grid->spacing(), 2);
    EXPECT_EQ(grid->contentsMargins(), QMargins());
    EXPECT_NE(grid->itemAtPosition(1, 0)->spacerItem(), nullptr);

    const QStringList groupLine = lines[1], groupFacts = groupLine[0].split(' ');
    QWidget* group = grid->itemAtPosition(0, 0)->widget();
    ASSERT_NE(group, nullptr);
    EXPECT_TRUE(group->inherits("Q3ButtonGroup"));
    EXPECT_EQ(group->objectName(), groupFacts[0]);
    EXPECT_EQ(group->minimumSize(), QSize(230, 0));
    EXPECT_EQ(group->property("title").toString(), QString());
    EXPECT_EQ(described(*group, groupLine), groupLine.join(" | ").toStdString());
    const auto* column = qobject_cast<QBoxLayout*>(group->layout());
    ASSERT_NE(column, nullptr);
    EXPECT_EQ(column->direction(), QBoxLayout::TopToBottom);
    EXPECT_EQ(column->spacing(), groupFacts[1].toInt());
    const int margin = groupFacts[2].toInt();
    EXPECT_EQ(column->contentsMargins(), QMargins(margin, margin, margin, margin));
    EXPECT_EQ(column->itemAt(0)->alignment(), Qt::AlignTop);

    std::vector<std::string> expected, actual;
    for (std::size_t i = 2; i < lines.size(); ++i) {
        expected.push_back(lines[i].join(" | ").toStdString());
        const QString name = lines[i][0].section(' ', 0, 0);
        auto* widget = group->findChild<QWidget*>(name, Qt::FindDirectChildrenOnly);
        ASSERT_NE(widget, nullptr) << name.toStdString();
        QStringList line = lines[i];
        line[0] = name + " " + widget->metaObject()->className() + " " + placeOf(*page, widget);
        actual.push_back(described(*widget, line));
    }
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(page->findChildren<QWidget*>().size(), static_cast<int>(lines.size() - 1));
}

TEST_P(ControlPage, TranslatesItsTextsInTheContextOfItsForm) {
    FilterHost host(GetParam().filter);
    ContextRecorder recorder;
    const QWidget* page = host.manipulator->createFilterGui(&host.entry());
    std::set<std::string> texts = {"Form2"};
    QList<const QWidget*> widgets = {page};
    for (const QWidget* widget : page->findChildren<QWidget*>()) widgets.append(widget);
    for (const QWidget* widget : widgets)
        for (const char* property : {"text", "toolTip", "whatsThis"})
            texts.insert(widget->property(property).toString().toStdString());
    texts.erase("");
    const std::string context = linesOf(GetParam())[0][0].toStdString();
    EXPECT_THAT(recorder.noted, ElementsAre(Pair(context, texts)));

    recorder.noted.clear();
    texts = {host.manipulator->filterTitle().toStdString(),
             host.manipulator->filterDescription().toStdString()};
    EXPECT_THAT(recorder.noted, ElementsAre(Pair(GetParam().manipulator, texts)));
}

TEST_P(ControlPage, EverySliderPositionSurvivesStoringAndShowing) {
    FilterHost host(GetParam().filter);
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

/// A slider is dragged by its handle over the length of its groove, a quarter at a time.
void drag(QSlider* slider) {
    QStyleOptionSlider option;
    option.initFrom(slider);
    option.orientation = slider->orientation();
    option.minimum = slider->minimum();
    option.maximum = slider->maximum();
    option.sliderPosition = slider->sliderPosition();
    option.sliderValue = slider->value();
    option.tickPosition = slider->tickPosition();
    const QPoint handle =
        slider->style()
            ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, slider)
            .center();
    const int way = handle.x() < slider->width() / 2 ? slider->width() : -slider->width();
    QTest::mousePress(slider, Qt::LeftButton, Qt::NoModifier, handle);
    QPoint at = handle;
    for (int quarter = 1; quarter <= 4; ++quarter) {
        at = handle + QPoint(way * quarter / 4, 0);
        QMouseEvent move(QEvent::MouseMove, at, slider->mapToGlobal(at), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(slider, &move);
    }
    QTest::mouseRelease(slider, Qt::LeftButton, Qt::NoModifier, at);
}

TEST_P(ControlPage, OneGestureIsOneUndoStep) {
    FilterHost host(GetParam().filter);
    QApplication::setStyle("windows");  // others paint on threads of the toolkit's own
    host.entry().resize(300, 160);
    host.entry().show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&host.entry()));
    host.manipulator->commitGuiChanges(host.objectId);  // a default may lie off the page
    host.undo.clear();
    int edits = 0;
    QObject::connect(KernelNotifier::instance(), &KernelNotifier::objectChanged,
                     host.manipulator.get(), [&edits] { ++edits; });
    int steps = 0;
    for (QSlider* control : host.page().findChildren<QSlider*>()) {
        for (int i = 0; i < 2; ++i) {
            const int start = control->value();
            edits = 0;
            drag(control);
            EXPECT_NE(control->value(), start) << control->objectName().toStdString();
            if (control->hasTracking())
                EXPECT_GT(edits, 1) << control->objectName().toStdString();
            else
                EXPECT_EQ(edits, 1) << control->objectName().toStdString();
            EXPECT_EQ(host.undo.count(), ++steps) << control->objectName().toStdString();
        }
        QTest::mouseClick(&host.entry(), Qt::LeftButton);  // ends the gesture
        const Qt::Key key = control->value() > control->minimum() ? Qt::Key_Left : Qt::Key_Right;
        edits = 0;
        for (int i = 0; i < 3; ++i) QTest::keyClick(control, key);
        EXPECT_EQ(edits, 3) << control->objectName().toStdString();
        EXPECT_EQ(host.undo.count(), ++steps) << control->objectName().toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Filters, ControlPage, testing::ValuesIn(kPages),
                         [](const auto& row) { return std::string(row.param.manipulator); });

TEST(ControlPages, AreAllDescribedHere) {
    std::set<std::string> described, offered;
    for (const PageRow& row : kPages) described.insert(row.filter);
    for (const ExpectedFilter& filter : expectedFilters()) offered.insert(filter.key);
    EXPECT_EQ(described, offered);
}

// What the pages show of stored values

namespace {

struct ShownRow {
    const char* filter;
    int parameter;
    QVariant stored;
    const char* control;
    int position;
};

const char kSep[] = "Channel separation";
const char kThreshold[] = "Adaptive threshold";
const char kDegauss[] = "Degauss";
const char kDistance[] = "Object separator";

}  // namespace

TEST(ControlPageValues, AreShownAsStored) {
    const ShownRow rows[] = {
        {kSep, 1, 1, "theRBRed", 1},
        {kSep, 1, 2, "theRBGreen", 1},
        {kSep, 1, 3, "theRBBlue", 1},
        {kSep, 1, 4, "theRBHue", 1},
        {kSep, 1, 5, "theRBLightness", 1},
        {kSep, 1, 6, "theRBSaturation", 1},
        {kSep, 1, 0, "theRBLightness", 1},  // an unknown channel leaves the buttons as they are
        {kSep, 1, 7, "theRBLightness", 1},
        {kSep, 2, true, "theChBInvert", 1},
        {"Blur and enhance", 1, true, "theChbMaxFilter", 1},
        {"Blur and enhance", 2, 13, "theSlBlur", 13},
        {"Blur and enhance", 2, 99, "theSlBlur", 13},
        {"Blur and enhance", 2, -4, "theSlBlur", 1},
        {kThreshold, 1, 5, "theSlSize", 5},  // less than the slider can show
        {kThreshold, 1, 24, "theSlSize", 11},
        {kThreshold, 1, 257, "theSlSize", 50},
        {kThreshold, 2, 12.8, "theSlMin", 128},
        {kThreshold, 2, 12.89, "theSlMin", 128},
        {kThreshold, 2, 25.56, "theSlMin", 255},
        {kThreshold, 2, -0.19, "theSlMin", 0},
        {kThreshold, 2, 1e300, "theSlMin", 255},
        {"Open_Close", 1, 14, "theSlOpen", 13},
        {"Open_Close", 1, -14, "theSlOpen", -13},
        {"Dilate_Erode", 1, -7, "theSlDilate", -7},
        {kDegauss, 1, 16, "theSlThresh", 15},
        {kDegauss, 2, 0, "theRBMethodFFT", 1},
        {kDegauss, 2, 0, "theRBMethodLR", 0},
        {kDegauss, 2, 1, "theRBMethodLR", 1},
        {kDegauss, 2, 2, "theRBMethodLR", 1},  // an unknown method leaves the buttons as they are
        {kDistance, 1, 0, "theRbFilled", 1},
        {kDistance, 1, 1, "theRbBorders", 1},
        {kDistance, 1, 3, "theRbBorders", 1},  // its lowest bit counts
        {kDistance, 1, 2, "theRbFilled", 1},
        {kDistance, 2, 10, "theSlDetails", 10},
        {kDistance, 2, 101, "theSlDetails", 100},
    };
    for (const ShownRow& row : rows) {
        FilterHost host(row.filter);
        host.set(row.parameter, row.stored);
        EXPECT_EQ(host.position(row.control), row.position)
            << row.filter << ": " << row.stored.toString().toStdString() << " on " << row.control;
        EXPECT_EQ(host.undo.count(), 0);
        EXPECT_EQ(host.value(row.parameter), row.stored);
    }
}

TEST(ControlPageValues, GoBackToTheFirstChoice) {
    const ShownRow rows[] = {{kSep, 1, 6, "theRBLightness", 0},
                             {kDegauss, 2, 0, "theRBMethodLR", 0},
                             {kDistance, 1, 1, "theRbFilled", 0}};
    for (const ShownRow& row : rows) {
        FilterHost host(row.filter);
        const QVariant fresh = host.value(row.parameter);
        host.set(row.parameter, row.stored);
        EXPECT_EQ(host.position(row.control), 0) << row.filter;
        host.set(row.parameter, fresh);
        EXPECT_EQ(host.position(row.control), 1) << row.filter;
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
    auto* lightness = host.control<QAbstractButton>("theRBLightness");
    lightness->setAutoExclusive(false);
    lightness->setChecked(false);
    host.edit("theChBInvert", 1);
    EXPECT_EQ(host.value(1), QVariant(0));
    EXPECT_EQ(host.value(2), QVariant(true));
}
