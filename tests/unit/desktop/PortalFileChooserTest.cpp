#include "platform/desktop/portal/PortalFileChooser.h"

#include "platform/desktop/portal/PortalFilter.h"
#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/PrivateWorld.h"

#include <QDBusArgument>
#include <QDBusObjectPath>

namespace cantorel::desktop {
namespace {

using What = FileChooser::Question::What;

// A desktop whose dialogs wait until the test answers.
class FakeDialogs : public test::FakeService {
public:
    FakeDialogs() : FakeService("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop") {}

    void respond(int dialog, uint code, const QStringList &uris) {
        tell("org.freedesktop.portal.Request", "Response", {code, QVariantMap{{"uris", uris}}}, requests[dialog]);
    }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        method = message.member();
        if ((method != "OpenFile" && method != "SaveFile") || !offers)
            return bus.send(message.createErrorReply(QDBusError::UnknownMethod, "no such method"));
        options = qdbus_cast<QVariantMap>(message.arguments().value(2));
        parent = message.arguments().value(0).toString();
        QString sender = message.service().mid(1);
        requests << mPath + "/request/" + sender.replace('.', '_') + '/' + options.value("handle_token").toString();
        return bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(requests.last()))));
    }

    bool offers = true;
    QVariantMap options; // of the last dialog
    QString parent, method;
    QStringList requests;
};

class PortalFileChooserTest : public testing::Test {
protected:
    void ask(const FileChooser::Question &question) {
        chooser.ask(question, [this](const std::optional<QStringList> &paths) { answers.push_back(paths); });
    }
    bool answered(std::size_t count) {
        return test::eventually([&] { return answers.size() >= count; });
    }

    const test::PrivateBus bus;
    FakeDialogs desktop;
    PortalFileChooser chooser{[] { return QDBusConnection::sessionBus(); }};
    std::vector<std::optional<QStringList>> answers;
};

TEST_F(PortalFileChooserTest, EachQuestionGetsItsOwnAnswerInLocalPaths) {
    ask({What::Files, "Sound files", "/music", 0x1f});
    ASSERT_TRUE(test::eventually([&] { return desktop.requests.size() == 1; }));
    EXPECT_TRUE(desktop.options.value("multiple").toBool());
    EXPECT_FALSE(desktop.options.value("directory").toBool());
    EXPECT_EQ(desktop.options.value("current_folder").toByteArray(), QByteArray("/music\0", 7));
    EXPECT_EQ(desktop.parent, "x11:1f");
    EXPECT_FALSE(desktop.options.contains("filters"));
    ask({.what = What::Folder, .title = "Folder", .filters = {{"Sound", {"mp3"}}, {"All", {}}}});
    ASSERT_TRUE(test::eventually([&] { return desktop.requests.size() == 2; }));
    EXPECT_TRUE(desktop.options.value("directory").toBool());
    const auto filters = qdbus_cast<QList<PortalFilter>>(desktop.options.value("filters"));
    ASSERT_EQ(filters.size(), 2);
    EXPECT_EQ(filters[0].name + ' ' + filters[0].patterns.at(0).pattern, "Sound *.[mM][pP]3");
    EXPECT_EQ(filters[1].name + ' ' + filters[1].patterns.at(0).pattern, "All *");
    desktop.respond(1, 0, {"file:///tmp"});
    ASSERT_TRUE(answered(1));
    desktop.respond(0, 0, {"file:///a%20b.mp3", "https://elsewhere/c.mp3"});
    ASSERT_TRUE(answered(2));
    EXPECT_EQ(answers[0], QStringList{"/tmp"});
    EXPECT_EQ(answers[1], QStringList{"/a b.mp3"});
    desktop.respond(0, 0, {"file:///late.mp3"});
    ask({What::Files, "Sound files", {}, 0});
    ASSERT_TRUE(test::eventually([&] { return desktop.requests.size() == 3; }));
    desktop.respond(2, 1, {});
    ASSERT_TRUE(answered(3));
    EXPECT_EQ(answers[2], QStringList()) << "cancelled";
    ask({What::NewFile, "Export as", "/music", 0, "Evening"});
    ASSERT_TRUE(test::eventually([&] { return desktop.requests.size() == 4; }));
    EXPECT_EQ(desktop.method + ' ' + desktop.options.value("current_name").toString(), "SaveFile Evening");
    EXPECT_FALSE(desktop.options.contains("multiple"));
    EXPECT_EQ(answers.size(), 3u) << "answered once";
}

TEST_F(PortalFileChooserTest, WhereTheDesktopShowsNoDialogThatIsTold) {
    desktop.offers = false;
    ask({What::Files, "Sound files", {}, 0});
    ASSERT_TRUE(answered(1));
    EXPECT_FALSE(answers[0]);
}

} // namespace
} // namespace cantorel::desktop
