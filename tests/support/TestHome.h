#pragma once

#include <QTemporaryDir>

namespace cantorel::test {

// A home of the process's own: its folders, and none of the person's servers, displays and buses. Before the
// application object.
class TestHome {
public:
    TestHome();
    bool isValid() const { return mFolder.isValid(); }

private:
    QTemporaryDir mFolder;
};

} // namespace cantorel::test
