#pragma once

#include <QObject>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace editor {

class MailboxBase : public QObject {
    Q_OBJECT

protected:
    void announce() { QMetaObject::invokeMethod(this, "takeAll", Qt::QueuedConnection); }
    Q_INVOKABLE virtual void takeAll() = 0;
};

/// Hands what other threads post to a function on the thread that made the mailbox, in order, when
/// control returns to its event loop. What was not taken yet when the mailbox goes is dropped;
/// whoever posts must have ended before.
template <typename Letter>
class Mailbox : public MailboxBase {
public:
    explicit Mailbox(std::function<void(const Letter&)> take) : m_take(std::move(take)) {}

    /// Any thread.
    void post(Letter letter) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_letters.push_back(std::move(letter));
        }
        announce();
    }

private:
    void takeAll() override {
        std::vector<Letter> letters;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            letters.swap(m_letters);
        }
        for (const Letter& letter : letters) m_take(letter);
    }

    std::function<void(const Letter&)> m_take;
    std::mutex m_mutex;
    std::vector<Letter> m_letters;
};

}  // namespace editor
