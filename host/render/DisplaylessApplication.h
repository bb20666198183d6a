#pragma once

#include <QApplication>
#include <memory>

namespace render {

/// The toolkit, which needs no display to render; the user's desktop has no say in it either. One
/// at a time, on the main thread.
class DisplaylessApplication {
public:
    DisplaylessApplication();

private:
    // The toolkit keeps references to these. The program's own arguments are not for it.
    int m_argumentCount = 1;
    char m_name[9] = "fxrender";
    char* m_arguments[2] = {m_name, nullptr};
    std::unique_ptr<QApplication> m_application;
};

}  // namespace render
