#pragma once

// The few places where the toolkits that this code serves (4.8, 5.15, 6) differ.

#include <QObject>
#include <QString>

/// How the plug-in connects signals: number 3 of the host's toolkit, the automatic connection that
/// also accepts compatible slots. Later toolkits dropped it and gave its number to a blocking
/// connection, which would wait for itself.
#if QT_VERSION < 0x050000
const Qt::ConnectionType kAutoCompatConnection = Qt::AutoCompatConnection;
#else
const Qt::ConnectionType kAutoCompatConnection = Qt::AutoConnection;
#endif

/// Keeps an object's signals blocked as long as it lives.
class SignalsBlocked {
public:
    explicit SignalsBlocked(QObject* object)
        : m_object(object), m_wereBlocked(object->blockSignals(true)) {}
    ~SignalsBlocked() { m_object->blockSignals(m_wereBlocked); }

private:
    SignalsBlocked(const SignalsBlocked&);
    SignalsBlocked& operator=(const SignalsBlocked&);

    QObject* m_object;
    bool m_wereBlocked;
};
