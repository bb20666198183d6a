#pragma once

#include <QtGlobal>

#if QT_VERSION < 0x050000
#include <Qt3Support/Q3ButtonGroup>
#else

#include <QGroupBox>
#include <QList>

class QAbstractButton;

/// A group box that numbers the buttons added to it, in order of insertion from 0, and reports them
/// by number. Stands in for the class of that name, which later toolkits no longer have; the forms
/// use it.
class Q3ButtonGroup : public QGroupBox {
    Q_OBJECT
    Q_PROPERTY(bool exclusive READ isExclusive WRITE setExclusive)

public:
    explicit Q3ButtonGroup(QWidget* parent = nullptr);

    /// Gives the group a layout along `direction`. strips is 0: the contents bring their own grid.
    void setColumnLayout(int strips, Qt::Orientation direction);

    /// Exclusive: checking one checkable button unchecks all others. Off by default; radio buttons
    /// exclude one another in any case.
    bool isExclusive() const { return m_exclusive; }
    void setExclusive(bool exclusive);

    int id(QAbstractButton* button) const;  ///< -1 when the button is not in the group
    QAbstractButton* find(int id) const;    ///< null when no button has that number

signals:
    void clicked(int id);
    void pressed(int id);
    void released(int id);

protected:
    void childEvent(QChildEvent* event) override;
    void connectNotify(const QMetaMethod& signal) override;

private slots:
    void adoptButtons();
    void buttonClicked();
    void buttonPressed();
    void buttonReleased();
    void buttonToggled(bool checked);

private:
    void forget(QObject* child);
    int idOfSender() const;

    QList<QAbstractButton*> m_buttons;  ///< index = number; null where a button is gone
    bool m_exclusive = false;
};

#endif
