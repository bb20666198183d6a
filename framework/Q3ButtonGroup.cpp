#include "framework/Q3ButtonGroup.h"

#if QT_VERSION >= 0x050000

#include <QAbstractButton>
#include <QBoxLayout>
#include <QChildEvent>

#include "framework/QtCompat.h"

Q3ButtonGroup::Q3ButtonGroup(QWidget* parent) : QGroupBox(parent) {}

void Q3ButtonGroup::setColumnLayout(int strips, Qt::Orientation direction) {
    Q_UNUSED(strips)
    delete layout();
    // A group laid out along an orientation fills its strips across it: a vertical one stacks
    // downwards.
    new QBoxLayout(direction == Qt::Vertical ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight,
                   this);
}

void Q3ButtonGroup::setExclusive(bool exclusive) {
    m_exclusive = exclusive;
    adoptButtons();
}

int Q3ButtonGroup::id(QAbstractButton* button) const {
    const_cast<Q3ButtonGroup*>(this)->adoptButtons();
    return button ? m_buttons.indexOf(button) : -1;
}

QAbstractButton* Q3ButtonGroup::find(int id) const {
    const_cast<Q3ButtonGroup*>(this)->adoptButtons();
    return m_buttons.value(id, nullptr);
}

// A child announces itself before it is a button, so it is adopted a moment later: when somebody
// asks or listens, or when the event loop comes round.
void Q3ButtonGroup::childEvent(QChildEvent* event) {
    if (event->added()) {
        QMetaObject::invokeMethod(this, "adoptButtons", Qt::QueuedConnection);
    } else if (event->removed()) {
        forget(event->child());
    }
    QGroupBox::childEvent(event);
}

// The child may be half destroyed: it is compared and disconnected as a plain object.
void Q3ButtonGroup::forget(QObject* child) {
    for (QAbstractButton*& button : m_buttons) {
        if (button != child) continue;
        disconnect(child, nullptr, this, nullptr);
        button = nullptr;  // the numbers of the others stay
    }
}

void Q3ButtonGroup::connectNotify(const QMetaMethod& signal) {
    adoptButtons();
    QGroupBox::connectNotify(signal);
}

void Q3ButtonGroup::adoptButtons() {
    for (QObject* child : children()) {
        QAbstractButton* button = qobject_cast<QAbstractButton*>(child);
        if (!button || m_buttons.contains(button)) continue;
        m_buttons.append(button);
        connect(button, SIGNAL(clicked()), this, SLOT(buttonClicked()), kAutoCompatConnection);
        connect(button, SIGNAL(pressed()), this, SLOT(buttonPressed()), kAutoCompatConnection);
        connect(button, SIGNAL(released()), this, SLOT(buttonReleased()), kAutoCompatConnection);
        connect(button, SIGNAL(toggled(bool)), this, SLOT(buttonToggled(bool)),
                kAutoCompatConnection);
    }
}

int Q3ButtonGroup::idOfSender() const {
    return m_buttons.indexOf(qobject_cast<QAbstractButton*>(sender()));
}

void Q3ButtonGroup::buttonClicked() {
    emit clicked(idOfSender());
}

void Q3ButtonGroup::buttonPressed() {
    emit pressed(idOfSender());
}

void Q3ButtonGroup::buttonReleased() {
    emit released(idOfSender());
}

void Q3ButtonGroup::buttonToggled(bool checked) {
    if (!m_exclusive || !checked) return;
    for (QAbstractButton* other : m_buttons)
        if (other && other != sender() && other->isCheckable()) other->setChecked(false);
}

#endif
