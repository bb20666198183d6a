#include "host/editor/SweepDialog.h"

#include <QComboBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStandardItemModel>
#include <algorithm>
#include <cmath>
#include <exception>
#include <functional>
#include <vector>

#include "framework/contract/FxKernelApi/CmdChangeObject.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/document/PictureImage.h"
#include "host/editor/EditorDocument.h"
#include "host/editor/Texts.h"
#include "host/kernel/ParamValue.h"

namespace editor {

/// The pictures in rows and columns, each under its values.
class SweepSheet : public QWidget {
public:
    explicit SweepSheet(QWidget* parent, std::function<void(int)> chosen)
        : QWidget(parent), m_chosen(std::move(chosen)) {
        setObjectName(QStringLiteral("sweepSheet"));
        setMouseTracking(true);
        setFocusPolicy(Qt::StrongFocus);
        setAccessibleName(SweepDialog::tr("Pictures to choose from"));
        setMinimumSize(480, 320);
    }

    void reset(int columns, const QStringList& titles, int current) {
        m_columns = columns;
        m_titles = titles;
        m_current = current;
        m_focused = std::max(0, current);
        m_cells.assign(static_cast<std::size_t>(titles.size()), {});
        m_images.assign(m_cells.size(), QImage());
        update();
    }
    void set(std::size_t index, const SweepRenderer::Cell& cell) {
        if (index >= m_cells.size()) return;
        m_cells[index] = cell;
        m_images[index] = document::imageOf(cell.picture);
        update();
    }
    QRect cellRect(int index) const {
        const int columns = std::max(1, m_columns);
        const int rows = std::max(1, (static_cast<int>(m_cells.size()) + columns - 1) / columns);
        const int column = index % columns, row = index / columns;
        return QRect(width() * column / columns, height() * row / rows,
                     width() * (column + 1) / columns - width() * column / columns,
                     height() * (row + 1) / rows - height() * row / rows)
            .adjusted(4, 4, -4, -4);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        const int textHeight = fontMetrics().height() + 4;
        for (int index = 0; index < static_cast<int>(m_cells.size()); ++index) {
            const auto place = static_cast<std::size_t>(index);
            const QRect cell = cellRect(index);
            const QRect field = cell.adjusted(3, 3, -3, -textHeight - 3);
            painter.fillRect(cell, palette().color(QPalette::Base));
            const QImage& image = m_images[place];
            if (image.isNull()) {
                painter.setPen(palette().color(QPalette::PlaceholderText));
                painter.drawText(field, Qt::AlignCenter, QStringLiteral("…"));
            } else {
                const QSize size = image.size().scaled(field.size(), Qt::KeepAspectRatio);
                QRect target(QPoint(0, 0), size);
                target.moveCenter(field.center());
                painter.drawImage(target, image);
            }
            QString title = m_titles.at(index);
            if (m_cells[place].objects)
                title += QStringLiteral("  ·  ") + objectCountText(*m_cells[place].objects);
            QFont font = painter.font();
            font.setBold(index == m_current);
            painter.setFont(font);
            painter.setPen(palette().color(QPalette::Text));
            painter.drawText(
                QRect(cell.left(), cell.bottom() - textHeight, cell.width(), textHeight),
                Qt::AlignCenter, title);
            if (index == m_hovered || (hasFocus() && index == m_focused)) {
                painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
                painter.drawRect(cell.adjusted(1, 1, -1, -1));
            }
        }
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        const int over = cellAt(event->pos());
        if (over == m_hovered) return;
        m_hovered = over;
        setCursor(over >= 0 ? Qt::PointingHandCursor : Qt::ArrowCursor);
        update();
    }
    void leaveEvent(QEvent*) override {
        m_hovered = -1;
        update();
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        const int cell = cellAt(event->pos());
        if (event->button() == Qt::LeftButton && cell >= 0) m_chosen(cell);
    }
    void keyPressEvent(QKeyEvent* event) override {
        const int count = static_cast<int>(m_cells.size());
        const int by = event->key() == Qt::Key_Right  ? 1
                       : event->key() == Qt::Key_Left ? -1
                       : event->key() == Qt::Key_Down ? m_columns
                       : event->key() == Qt::Key_Up   ? -m_columns
                                                      : 0;
        if (by != 0 && count > 0) {
            m_focused = std::clamp(m_focused + by, 0, count - 1);
            update();
        } else if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Space) && count > 0) {
            m_chosen(m_focused);
        } else {
            QWidget::keyPressEvent(event);
        }
    }
    void focusInEvent(QFocusEvent*) override { update(); }
    void focusOutEvent(QFocusEvent*) override { update(); }

private:
    int cellAt(QPoint position) const {
        for (int index = 0; index < static_cast<int>(m_cells.size()); ++index)
            if (cellRect(index).contains(position)) return index;
        return -1;
    }

    std::function<void(int)> m_chosen;
    int m_columns = 1, m_current = -1, m_hovered = -1, m_focused = 0;
    QStringList m_titles;
    std::vector<SweepRenderer::Cell> m_cells;
    std::vector<QImage> m_images;
};

int SweepDialog::Axis::index() const {
    return parameter->currentData().toInt();
}

SweepDialog::SweepDialog(EditorDocument& document, EditorState& state, InstanceId instance,
                         QWidget* parent)
    : QDialog(parent),
      m_document(document),
      m_state(state),
      m_instance(instance),
      m_rendered([this](const Rendered& rendered) {
          if (rendered.run != m_run) return;
          m_sheet->set(rendered.index, rendered.cell);
          if (--m_missing == 0) emit completed();
      }),
      m_renderer([this](quint64 run, std::size_t index, const SweepRenderer::Cell& cell) {
          m_rendered.post({run, index, cell});
      }) {
    setObjectName(QStringLiteral("sweepDialog"));
    setWindowTitle(tr("Try values – %1").arg(KernelStore::instance().nameOf(instance.objectId)));
    auto* grid = new QGridLayout(this);
    m_across = makeAxis(0, tr("&Parameter"), false);
    m_down = makeAxis(1, tr("&And"), true);
    m_sheet = new SweepSheet(this, [this](int cell) { choose(cell); });
    grid->addWidget(m_sheet, 2, 0, 1, 5);
    auto* hint =
        new QLabel(tr("Click the best one: its values are set. Bold: the present values."), this);
    hint->setForegroundRole(QPalette::PlaceholderText);
    grid->addWidget(hint, 3, 0, 1, 5);
    grid->setRowStretch(2, 1);
    grid->setColumnStretch(4, 1);
    resize(860, 640);
    connect(&state, &EditorState::currentFrameChanged, this, &SweepDialog::render);
    render();
}

SweepDialog::~SweepDialog() = default;

SweepDialog::Axis SweepDialog::makeAxis(int row, const QString& title, bool optional) {
    auto* grid = static_cast<QGridLayout*>(layout());
    const document::FilterCatalog& catalog = m_document.session().catalog();
    const HkKernelObjectDataDescr& descr = catalog.descriptor(m_instance.typeId);
    Axis axis{new QComboBox(this), new QSpinBox(this)};
    if (optional) axis.parameter->addItem(tr("no other"), -1);
    for (int index = 1; index < descr.paramCount(); ++index)
        if (descr.param(index).type == QMetaType::Bool || catalog.range(m_instance.typeId, index))
            axis.parameter->addItem(descr.param(index).name, index);
    axis.parameter->setAccessibleName(QString(title).remove(QLatin1Char('&')));
    // Of several parameters the one with the widest range is the one that is hard to set.
    double widest = 0;
    for (int item = 0; !optional && item < axis.parameter->count(); ++item) {
        const auto range = catalog.range(m_instance.typeId, axis.parameter->itemData(item).toInt());
        if (range && range->highest - range->lowest > widest) {
            widest = range->highest - range->lowest;
            axis.parameter->setCurrentIndex(item);
        }
    }
    axis.count->setRange(2, 16);
    axis.count->setValue(optional ? 3 : 9);
    axis.count->setAccessibleName(tr("How many values"));
    auto* label = new QLabel(title, this);
    label->setBuddy(axis.parameter);
    grid->addWidget(label, row, 0);
    grid->addWidget(axis.parameter, row, 1);
    grid->addWidget(axis.count, row, 2);
    grid->addWidget(new QLabel(tr("values"), this), row, 3);
    connect(axis.parameter, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &SweepDialog::render);
    connect(axis.count, qOverload<int>(&QSpinBox::valueChanged), this, &SweepDialog::render);
    return axis;
}

void SweepDialog::setCount(int count) {
    m_across.count->setValue(count);
}

bool SweepDialog::isComplete() const {
    return m_missing == 0;
}

QRect SweepDialog::cellRect(int index) const {
    return m_sheet->cellRect(index).translated(m_sheet->pos());
}

/// Evenly spaced over the whole range, both ends among them; no value twice.
QVector<QVariant> SweepDialog::valuesOf(const Axis& axis) const {
    const document::FilterCatalog& catalog = m_document.session().catalog();
    const int index = axis.index();
    if (index < 0) return {QVariant()};
    const ParamDescr& param = catalog.descriptor(m_instance.typeId).param(index);
    if (param.type == QMetaType::Bool) return {false, true};
    const auto range = *catalog.range(m_instance.typeId, index);
    const int count = axis.count->value();
    QVector<QVariant> values;
    for (int i = 0; i < count; ++i) {
        const double value = range.lowest + (range.highest - range.lowest) * i / (count - 1);
        const auto converted = convertParamValue(value, param.type);
        if (converted && !values.contains(*converted)) values << *converted;
    }
    return values;
}

/// The second parameter is not the first.
void SweepDialog::keepApart() {
    const auto* items = qobject_cast<QStandardItemModel*>(m_down.parameter->model());
    for (int i = 1; items && i < items->rowCount(); ++i)
        items->item(i)->setEnabled(m_down.parameter->itemData(i).toInt() != m_across.index());
    if (m_down.index() != m_across.index()) return;
    const QSignalBlocker quiet(m_down.parameter);
    m_down.parameter->setCurrentIndex(0);
}

void SweepDialog::render() {
    keepApart();
    const auto state = KernelStore::instance().state(m_instance.objectId);
    if (!state) {
        close();
        return;
    }
    const HkKernelObjectDataDescr& descr =
        m_document.session().catalog().descriptor(m_instance.typeId);
    m_acrossValues = valuesOf(m_across);
    m_downValues = valuesOf(m_down);
    const bool isGrid = m_downValues.size() > 1;
    m_down.count->setEnabled(isGrid);
    const qint64 frame = m_state.currentFrame();
    QStringList titles;
    int current = -1;
    for (const QVariant& down : std::as_const(m_downValues))
        for (const QVariant& across : std::as_const(m_acrossValues)) {
            QStringList parts;
            bool isCurrent = true;
            const auto add = [&](int index, const QVariant& value) {
                if (index < 0) return;
                parts << QStringLiteral("%1 %2").arg(descr.param(index).name,
                                                     paramValueText(value));
                isCurrent = isCurrent && valueInForce(*state, descr, index, frame) == value;
            };
            add(m_across.index(), across);
            if (isGrid) add(m_down.index(), down);
            if (isCurrent) current = static_cast<int>(titles.size());
            titles << parts.join(QStringLiteral(", "));
        }
    const int count = static_cast<int>(titles.size());
    const int columns = isGrid ? static_cast<int>(m_acrossValues.size())
                               : static_cast<int>(std::ceil(std::sqrt(count)));
    m_sheet->reset(columns, titles, current);
    m_missing = count;
    const auto sweepOf = [this](const Axis& axis, const QVector<QVariant>& values) {
        return document::ParameterSweep{m_instance, axis.index(),
                                        std::vector<QVariant>(values.begin(), values.end())};
    };
    std::optional<document::ParameterSweep> rows;
    if (isGrid) rows = sweepOf(m_down, m_downValues);
    const int longestSide = 400;
    try {
        m_run = m_renderer.start(m_document.source(), frame, sweepOf(m_across, m_acrossValues),
                                 rows, longestSide);
    } catch (const std::exception&) {
        close();  // a filter cannot be made: the preview says so
    }
}

void SweepDialog::choose(int cell) {
    const KernelStore& store = KernelStore::instance();
    const auto state = store.state(m_instance.objectId);
    if (!state) return;
    const HkKernelObjectDataDescr& descr =
        m_document.session().catalog().descriptor(m_instance.typeId);
    const int columns = static_cast<int>(m_acrossValues.size());
    HkParamKeyframeVector values = descr.createKeyframeVector();
    values[m_across.index()].assign(m_acrossValues.at(cell % columns));
    if (m_downValues.size() > 1) values[m_down.index()].assign(m_downValues.at(cell / columns));
    if (state->animated) values.setFrameNumber(m_state.currentFrame());
    m_document.session().undoStack().push(
        new CmdChangeObject(m_instance.typeId, m_instance.objectId, values, false));
    accept();
}

}  // namespace editor
