// The form of every control page: what its widgets and layouts are when the page is new. A line
// says of a widget what differs from a fresh one of its class, and of a layout all it holds.

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMetaEnum>
#include <QMetaProperty>
#include <QRadioButton>
#include <QSlider>
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "tests/kit/FilterHost.h"

namespace {

QString text(QSizePolicy policy) {
    const QMetaEnum names = QMetaEnum::fromType<QSizePolicy::Policy>();
    QString all = QString("%1/%2").arg(names.valueToKey(policy.horizontalPolicy()),
                                       names.valueToKey(policy.verticalPolicy()));
    if (policy.horizontalStretch() != 0) all += QString(":%1").arg(policy.horizontalStretch());
    if (policy.verticalStretch() != 0 || policy.hasHeightForWidth()) all += "!";
    return all;
}

QString text(QSize size) {
    return QString("%1x%2").arg(size.width()).arg(size.height());
}

QString text(const QObject& object, const char* name) {
    const QVariant value = object.property(name);
    const int index = object.metaObject()->indexOfProperty(name);
    const QMetaProperty property = object.metaObject()->property(index);
    if (qstrcmp(name, "alignment") == 0)  // two names for some of its values
        return value.toInt() == int(Qt::AlignRight | Qt::AlignVCenter) ? "Right|VCenter" : "other";
    if (property.isEnumType()) return property.enumerator().valueToKey(value.toInt());
    const QByteArray type = value.typeName();
    if (type == "QSizePolicy") return text(value.value<QSizePolicy>());
    if (type == "QSize") return text(value.toSize());
    return value.toString();
}

/// A fresh widget of the same class, or of the toolkit's class that it is made from.
const QWidget& freshLike(const QWidget& widget) {
    static const QRadioButton radio;
    static const QCheckBox check;
    static const QLabel label;
    static const QSlider slider(Qt::Horizontal);
    static const QGroupBox group;
    static const QWidget plain;
    for (const QWidget* fresh :
         std::initializer_list<const QWidget*>{&radio, &check, &label, &slider, &group})
        if (widget.inherits(fresh->metaObject()->className())) return *fresh;
    return plain;
}

void describe(const QWidget& widget, QStringList& lines) {
    QString line = widget.objectName() + " " + widget.metaObject()->className();
    for (const char* name : {"text",        "title",         "windowTitle",  "toolTip",
                             "whatsThis",   "statusTip",     "styleSheet",   "enabled",
                             "sizePolicy",  "minimumSize",   "maximumSize",  "alignment",
                             "wordWrap",    "exclusive",     "selectedId",   "checkable",
                             "checked",     "autoExclusive", "minimum",      "maximum",
                             "singleStep",  "pageStep",      "value",        "tracking",
                             "orientation", "tickPosition",  "tickInterval", "invertedAppearance",
                             "flat"}) {
        const QString value = text(widget, name), usual = text(freshLike(widget), name);
        if (value != usual && !(usual.isEmpty() && value == "false"))
            line += QString(" %1=%2").arg(name, value);
    }
    lines.append(line);
}

QString describe(QLayoutItem& item) {
    if (item.widget()) return item.widget()->objectName();
    if (item.layout()) return item.layout()->objectName();
    return text(item.sizeHint()) + " " + text(item.spacerItem()->sizePolicy());
}

void describe(QLayout& layout, QStringList& lines) {
    const QMargins margins = layout.contentsMargins();
    QString line =
        QString("%1 %2 spacing=%3 margins=%4,%5,%6,%7")
            .arg(qobject_cast<QGroupBox*>(layout.parent()) ? "group" : layout.objectName(),
                 layout.metaObject()->className())
            .arg(layout.spacing())
            .arg(margins.left())
            .arg(margins.top())
            .arg(margins.right())
            .arg(margins.bottom());
    if (layout.alignment() != 0) line += layout.alignment() == Qt::AlignTop ? " AlignTop" : " !";
    std::map<std::vector<int>, QString> places;
    for (int i = 0; i < layout.count(); ++i) {
        std::vector<int> place = {i, 0, 1, 1};
        if (auto* grid = qobject_cast<QGridLayout*>(&layout))
            grid->getItemPosition(i, &place[0], &place[1], &place[2], &place[3]);
        QString at = QString(" [%1,%2").arg(place[0]).arg(place[1]);
        if (place[2] * place[3] > 1) at += QString(" %1x%2").arg(place[2]).arg(place[3]);
        places[place] = at + " " + describe(*layout.itemAt(i)) + "]";
    }
    for (const auto& [place, described] : places) line += described;
    lines.append(line);
}

std::string formOf(const QWidget& page) {
    std::map<QString, const QWidget*> widgets;
    for (const QWidget* widget : page.findChildren<QWidget*>())
        widgets[widget->objectName()] = widget;
    QStringList lines = {text(page.size())};
    describe(page, lines);
    for (const auto& [name, widget] : widgets) describe(*widget, lines);
    for (QLayout* layout : page.findChildren<QLayout*>()) describe(*layout, lines);
    std::sort(lines.begin() + 2, lines.end());
    return lines.join("\n").toStdString();
}

/// What open/close and dilate/erode share. %1: the name, %2 and %3: the labels of the slider's
/// ends.
const char kMirrored[] = R"(238x58
FxGui%1Data FxGui%1 windowTitle=Form2
gridLayout QGridLayout spacing=2 margins=0,0,0,0 [0,0 theBGButtons] [1,0 16x0 Minimum/Preferred]
gridLayout1 QGridLayout spacing=4 margins=0,0,0,0 AlignTop [0,0 textLabel1_3] [0,1 theSl%1] [0,2 textLabel1_3_2]
group QVBoxLayout spacing=4 margins=4,4,4,4 [0,0 gridLayout1]
textLabel1_3 QLabel text=%2 minimumSize=34x0 alignment=Right|VCenter
textLabel1_3_2 QLabel text=%3 minimumSize=34x0
theBGButtons Q3ButtonGroup sizePolicy=Preferred/Maximum:2 minimumSize=230x0
theSl%1 QSlider toolTip=%4 whatsThis=%5 sizePolicy=Minimum/Maximum minimumSize=0x21 minimum=-13 maximum=13 pageStep=1 tickPosition=TicksAbove tickInterval=1)";

struct Form {
    const char* filter;
    QString lines;  ///< size, page, then widgets and layouts in the order of their names
};

}  // namespace

TEST(PageForms, AreWhatTheirUsersKnow) {
    const Form forms[] = {
        {"Channel separation", R"(238x58
FxGuiChannelSepData FxGuiChannelSep windowTitle=Form2
gridLayout QGridLayout spacing=2 margins=0,0,0,0 [0,0 theBGButtons] [1,0 16x0 Minimum/Preferred]
gridLayout1 QGridLayout spacing=4 margins=0,0,0,0 AlignTop [0,0 theRBLightness] [0,1 theRBSaturation] [0,2 theRBHue] [0,3 2x1 16x0 Expanding/Minimum] [0,4 2x1 theChBInvert] [1,0 theRBRed] [1,1 theRBGreen] [1,2 theRBBlue]
group QVBoxLayout spacing=4 margins=2,2,2,2 [0,0 gridLayout1]
theBGButtons Q3ButtonGroup sizePolicy=Preferred/Maximum:2 minimumSize=230x0
theChBInvert QCheckBox text=Invert
theRBBlue QRadioButton text=B
theRBGreen QRadioButton text=G
theRBHue QRadioButton text=H
theRBLightness QRadioButton text=L checked=true
theRBRed QRadioButton text=R
theRBSaturation QRadioButton text=S)"},
        {"Blur and enhance", R"(230x34
FxGuiBlurData FxGuiBlur windowTitle=Form2
gridLayout QGridLayout spacing=2 margins=0,0,0,0 [0,0 theBGButtons] [1,0 16x0 Minimum/Preferred]
group QVBoxLayout spacing=4 margins=4,4,4,4 [0,0 hboxLayout]
hboxLayout QHBoxLayout spacing=4 margins=0,0,0,0 AlignTop [0,0 textLabel1] [1,0 theSlBlur] [2,0 theChbMaxFilter]
textLabel1 QLabel text=Blur sizePolicy=Minimum/Preferred alignment=Right|VCenter
theBGButtons Q3ButtonGroup sizePolicy=Preferred/Maximum:2 minimumSize=230x0
theChbMaxFilter QCheckBox text=Enhance toolTip=Enhances an image whatsThis=Enhances an image using a 'maximum' filter.
theSlBlur QSlider toolTip=Blurs an image whatsThis=Blurs an image sizePolicy=MinimumExpanding/Maximum minimumSize=100x21 minimum=1 maximum=13 pageStep=1 value=1 tickPosition=TicksAbove)"},
        {"Adaptive threshold", R"(238x87
FxGuiAdaptTresholdData FxGuiAdaptTreshold windowTitle=Form2 sizePolicy=Preferred/Minimum
gridLayout QGridLayout spacing=2 margins=0,0,0,0 [0,0 theBGAll] [1,0 10x0 Minimum/Minimum]
gridLayout1 QGridLayout spacing=3 margins=0,0,0,0 AlignTop [0,0 textLabel1_2] [0,1 theSlSize] [1,0 textLabel1_2_2] [1,1 theSlMin]
group QVBoxLayout spacing=3 margins=4,4,4,4 [0,0 gridLayout1]
textLabel1_2 QLabel text=Area size maximumSize=32767x32767 alignment=Right|VCenter
textLabel1_2_2 QLabel text=Min value maximumSize=32767x32767 alignment=Right|VCenter
theBGAll Q3ButtonGroup minimumSize=230x0
theSlMin QSlider toolTip=Minimal value for threshold whatsThis=Sets the minimal pixel difference value used to calculate the threshold. minimumSize=0x21 maximum=255 value=128 tickPosition=TicksAbove tickInterval=25
theSlSize QSlider toolTip=Threshold neighbourhood size whatsThis=Sets the size of pixel neighbourhood used to calculate the threshold. minimumSize=0x21 minimum=5 maximum=50 pageStep=5 value=5 tickPosition=TicksAbove tickInterval=5)"},
        {"Dilate_Erode",
         QString(kMirrored).arg("Dilate", "Dilate", "Erode", "Erodes or dilates an image",
                                "Erodes or dilates an image")},
        {"Open_Close",
         QString(kMirrored).arg("Open", "Open", "Close", "Erodes and dilates an image",
                                "Erodes and dilates an image to open or close areas")},
        {"Degauss", R"(238x63
FxGuiDegaussData FxGuiDegauss windowTitle=Form2 toolTip=Sharpens an image whatsThis=Sharpens an image by deconvolution.
gridLayout QGridLayout spacing=2 margins=0,0,0,0 [0,0 theBGButtons] [1,0 16x0 Minimum/Preferred]
gridLayout1 QGridLayout spacing=4 margins=0,0,0,0 AlignTop [0,0 textLabel1] [0,1 1x3 theSlThresh] [1,0 textLabel1_2] [1,1 theRBMethodFFT] [1,2 theRBMethodLR] [1,3 16x0 Expanding/Minimum]
group QVBoxLayout spacing=4 margins=4,4,4,4 [0,0 gridLayout1]
textLabel1 QLabel text=Amount alignment=Right|VCenter
textLabel1_2 QLabel text=Method: alignment=Right|VCenter
theBGButtons Q3ButtonGroup sizePolicy=Preferred/Maximum:2 minimumSize=230x0
theRBMethodFFT QRadioButton text=FFT toolTip=FFT deconvolution whatsThis=Uses FFT deconvolution algorithm.
theRBMethodLR QRadioButton text=LR toolTip=Lucy-Richardson deconvolution whatsThis=Uses Lucy-Richardson deconvolution algorithm. checked=true
theSlThresh QSlider sizePolicy=MinimumExpanding/Maximum minimumSize=100x21 minimum=1 maximum=15 pageStep=2 value=2 tracking=false tickPosition=TicksAbove)"},
        {"Object separator", R"(238x63
FxGuiDistanceData FxGuiDistance windowTitle=Form2
gridLayout QGridLayout spacing=2 margins=0,0,0,0 [0,0 theBGButtons] [1,0 16x0 Minimum/Preferred]
gridLayout1 QGridLayout spacing=4 margins=0,0,0,0 AlignTop [0,0 theRbFilled] [0,1 theRbBorders]
group QVBoxLayout spacing=4 margins=4,4,4,4 [0,0 gridLayout1] [1,0 hboxLayout]
hboxLayout QHBoxLayout spacing=4 margins=0,0,0,0 [0,0 textLabel1_2] [1,0 theSlDetails]
textLabel1_2 QLabel text=Details alignment=Right|VCenter
theBGButtons Q3ButtonGroup sizePolicy=Preferred/Maximum:2 minimumSize=230x0 exclusive=true selectedId=1
theRbBorders QRadioButton text=Borders only toolTip=Creates area borders only. whatsThis=Separated areas will be filled black with white borders.
theRbFilled QRadioButton text=Filled toolTip=Creates filled areas whatsThis=Separated areas will be filled white. checked=true
theSlDetails QSlider toolTip=Level of segmentation. whatsThis=Controls segmentation intensity. Bigger the value, more subregions may be created. sizePolicy=MinimumExpanding/Maximum minimumSize=100x21 minimum=1 maximum=100 singleStep=2 value=30 tickPosition=TicksBelow tickInterval=5)"},
    };
    for (const Form& form : forms) {
        FilterHost host(form.filter);
        const QWidget* page = host.manipulator->createFilterGui(&host.entry());
        EXPECT_EQ(formOf(*page), form.lines.toStdString()) << form.filter;
    }
}
