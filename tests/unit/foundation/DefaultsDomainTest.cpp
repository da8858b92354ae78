#include "platform/foundation/DefaultsDomain.h"

#include "lang/Lang.h"
#include "platform/foundation/ChildProcess.h"
#include "platform/foundation/PropertyList.h"
#include "platform/foundation/SearchPaths.h"
#include "tests/support/OrdinaryFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <limits>
#include <random>
#include <thread>
#include <vector>

namespace cantorel::foundation {
namespace {

const QString kIdentifier = "com.example.Settings";

QString path() { return configurationFolder() + "/com.example.Settings.plist"; }

void write(const QByteArray &content) { test::store(path(), content); }

QStringList damagedCopies() { return QDir(configurationFolder()).entryList({"*.damaged*"}, QDir::Files, QDir::Name); }

QByteArray runPython(const QString &script, const QStringList &arguments) {
    const auto finished = ChildProcess::run({"python3", QStringList{"-c", script} + arguments, {}, {}});
    return finished ? finished.value().output : QByteArray("no python3");
}

TEST(DefaultsDomain, ArgumentsComeBeforeWhatIsStoredAndRegisteredDefaultsAfterIt) {
    DefaultsDomain domain(kIdentifier);
    const QString key = "k";
    EXPECT_FALSE(domain.object(key).isValid());
    domain.registerDefaults({{key, 1}});
    EXPECT_EQ(domain.object(key), 1);
    EXPECT_FALSE(domain.ownObject(key).isValid());
    ASSERT_TRUE(domain.setObject(key, 2) && domain.synchronize());
    EXPECT_EQ(domain.object(key), 2);
    domain.setArgument(key, 3);
    EXPECT_EQ(domain.object(key), 3);
    ASSERT_TRUE(domain.setObject("other", true) && domain.synchronize());
    EXPECT_EQ(DefaultsDomain(kIdentifier).object(key), 2); // an argument is never stored
}

TEST(DefaultsDomain, WhatIsSetIsSeenAtOnceAndStoredWithTheNextSave) {
    DefaultsDomain domain(kIdentifier);
    ASSERT_TRUE(domain.setObject("a", "x"));
    EXPECT_EQ(domain.object("a"), "x");
    EXPECT_FALSE(QFile::exists(path()));
    ASSERT_TRUE(domain.setObject("b", 1) && domain.synchronize());
    EXPECT_EQ(DefaultsDomain(kIdentifier).object("a"), "x");
    ASSERT_TRUE(domain.setObject("a", {}) && domain.synchronize());
    EXPECT_FALSE(DefaultsDomain(kIdentifier).object("a").isValid());
}

TEST(DefaultsDomain, WhatIsStoredAlreadyIsNotWrittenAgain) {
    DefaultsDomain domain(kIdentifier);
    const auto fileAfter = [&](const QVariant &value) { // each save is another file
        EXPECT_TRUE(domain.setObject("k", value) && domain.synchronize());
        struct stat status = {};
        EXPECT_EQ(::stat(QFile::encodeName(path()).constData(), &status), 0);
        return std::pair(status.st_ino, status.st_mtim.tv_nsec);
    };
    const auto first = fileAfter(1);
    EXPECT_EQ(fileAfter(1), first);
    EXPECT_NE(fileAfter(true), first) << "equal, but of another type";
    EXPECT_EQ(DefaultsDomain(kIdentifier).object("k").typeId(), QMetaType::Bool);
    write("<plist><dict><key>k</key><integer>7</integer></dict></plist>");
    (void)fileAfter(true);
    EXPECT_EQ(DefaultsDomain(kIdentifier).object("k"), true) << "it differed by then";
}

TEST(DefaultsDomain, ProcessesThatWriteAtOnceLoseNothing) {
    constexpr int kProcesses = 4, kWrites = 25;
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            DefaultsDomain domain(kIdentifier);
            bool fine = true;
            for (int i = 0; i < kWrites; ++i)
                fine = domain.setObject(QStringLiteral("p%1w%2").arg(p).arg(i), i) && domain.synchronize() && fine;
            ::_exit(fine ? 0 : 1);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(DefaultsDomain(kIdentifier).storedObjects().size(), kProcesses * kWrites);
}

TEST(DefaultsDomain, ThreadsThatShareADomainLoseNothing) {
    DefaultsDomain domain(kIdentifier);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&domain, t] {
            for (int i = 0; i < 10; ++i) {
                domain.setObject(QStringLiteral("t%1w%2").arg(t).arg(i), i);
                domain.synchronize();
            }
        });
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(DefaultsDomain(kIdentifier).storedObjects().size(), 40);
}

TEST(DefaultsDomain, ADamagedFileIsCopiedAsideOnceAndStandsUntilTheNextSave) {
    const QByteArray damaged = "<plist><dict><key>lost";
    write(damaged);
    int told = 0;
    DefaultsDomain domain(kIdentifier, [&](const Failure &) { ++told; });
    EXPECT_FALSE(domain.object("k").isValid());
    EXPECT_EQ(test::contents(path()), damaged);
    EXPECT_FALSE(DefaultsDomain(kIdentifier).object("k").isValid());
    ASSERT_EQ(damagedCopies().size(), 1);
    ASSERT_TRUE(domain.setObject("k", 1) && domain.synchronize());
    EXPECT_EQ(test::contents(configurationFolder() + '/' + damagedCopies().first()), damaged);
    EXPECT_EQ(DefaultsDomain(kIdentifier).object("k"), 1);
    write("other damage");
    EXPECT_FALSE(domain.object("k").isValid());
    EXPECT_EQ(damagedCopies().size(), 2);
    EXPECT_EQ(told, 2);
}

TEST(DefaultsDomain, WhatStandsInTheFilesPlaceIsNeverOverwrittenNorWaitedFor) {
    const std::pair<const char *, std::function<void()>> cases[] = {
        {"a folder", [] { ASSERT_TRUE(QDir().mkpath(path())); }}, // open, but not to be read
        {"a pipe", [] { ASSERT_EQ(::mkfifo(QFile::encodeName(path()).constData(), 0600), 0); }},
        {"a folder that cannot be made", [] {
             test::touch(QDir::homePath() + "/file");
             qputenv("XDG_CONFIG_HOME", (QDir::homePath() + "/file/below").toUtf8());
         }}};
    for (const auto &[what, stand] : cases) {
        SCOPED_TRACE(what);
        QDir().rmdir(path());
        QFile::remove(path());
        stand();
        int told = 0;
        DefaultsDomain domain(kIdentifier, [&](const Failure &failure) {
            ++told;
            EXPECT_FALSE(failure.sentence.isEmpty());
        });
        EXPECT_FALSE(domain.object("k").isValid());
        EXPECT_TRUE(domain.setObject("k", 1));
        EXPECT_FALSE(domain.synchronize());
        EXPECT_FALSE(domain.synchronize());
        EXPECT_EQ(domain.object("k"), 1); // the choice holds for this run
        EXPECT_EQ(told, 1);
        EXPECT_FALSE(QFileInfo(path()).isFile());
    }
}

TEST(DefaultsDomain, TheFileAndItsCopiesAreTheirOwnersAlone) {
    const auto rights = [](const QString &file) {
        struct stat status = {};
        EXPECT_EQ(::stat(QFile::encodeName(file).constData(), &status), 0);
        return status.st_mode & 0777;
    };
    DefaultsDomain domain(kIdentifier);
    ASSERT_TRUE(domain.setObject("k", 1) && domain.synchronize());
    EXPECT_EQ(rights(path()), 0600u);
    write("damaged");
    EXPECT_FALSE(domain.object("k").isValid());
    EXPECT_EQ(rights(path() + ".damaged"), 0600u);
}

TEST(DefaultsDomain, ASaveWaitsForAnotherProgramsLockButNotForEver) {
    QStringList told;
    DefaultsDomain domain(
        kIdentifier, [&](const Failure &failure) { told << Lang::english(failure.sentence); },
        std::chrono::milliseconds(30));
    ASSERT_TRUE(domain.setObject("k", 1) && domain.synchronize());
    QFile lock(configurationFolder() + "/.com.example.Settings.lock");
    ASSERT_TRUE(lock.open(QIODevice::ReadWrite));
    ASSERT_EQ(::flock(lock.handle(), LOCK_EX), 0);
    ASSERT_TRUE(domain.setObject("k", 2));
    EXPECT_FALSE(domain.synchronize());
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.first().contains("locked"));
    ASSERT_EQ(::flock(lock.handle(), LOCK_UN), 0);
    EXPECT_TRUE(domain.synchronize());
}

TEST(DefaultsDomain, AFailedSaveLeavesTheOldFileAndNoRemains) {
    DefaultsDomain domain(kIdentifier);
    ASSERT_TRUE(domain.setObject("k", 1) && domain.synchronize());
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const rlimit tiny{16, 16};
        ::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &tiny);
        ::_exit(domain.setObject("k", 2) && domain.synchronize() ? 1 : 0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(DefaultsDomain(kIdentifier).object("k"), 1);
    EXPECT_TRUE(QDir(configurationFolder()).entryList({"*.new"}, QDir::Files | QDir::Hidden).isEmpty());
}

TEST(DefaultsDomain, ALinkedFileStaysALinkAndKeepsItsRights) {
    const QString real = QDir::homePath() + "/real.plist";
    ASSERT_TRUE(QFile::link(real, path()));
    test::store(real, propertyListXml(QVariantMap{}));
    QFile::setPermissions(real, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup);
    const auto rights = QFileInfo(real).permissions();
    DefaultsDomain domain(kIdentifier);
    ASSERT_TRUE(domain.setObject("k", 1) && domain.synchronize());
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_TRUE(test::contents(real).contains("<key>k</key>"));
    EXPECT_EQ(QFileInfo(real).permissions(), rights);
}

// Data of so many bytes, no two stretches of it alike.
QByteArray dataOf(qsizetype size, unsigned seed) {
    QByteArray data(size, Qt::Uninitialized);
    std::mt19937 random(seed);
    std::generate(data.begin(), data.end(), [&] { return static_cast<char>(random()); });
    return data;
}

QByteArray elementOf(const char *key, const QByteArray &value) {
    return QByteArray("<key>") + key + "</key>" + value + '\n';
}

// Large data are passed over when the file is read; whatever stands around them, every value is what a plain parser
// finds there, and stays so when another key is saved.
TEST(DefaultsDomain, LargeDataAreWhatAPlainParserReadsAndOutliveOtherChanges) {
    const QByteArray first = "<data>" + dataOf(900'001, 1).toBase64() + "</data>";
    const QByteArray second = "<data>\n\t" + dataOf(500'000, 2).toBase64() + "\n</data>";
    const QByteArray text = "<string>&lt;data&gt;" + QByteArray(300'000, 'x') + "</string>";
    std::vector<QByteArray> lists{
        elementOf("a", first) + elementOf("b", second) + elementOf("c", "<integer>7</integer>"),
        elementOf("text", text) + elementOf("b", second) + elementOf("after", text),
        elementOf("inside", "<array>" + first + "</array>") + elementOf("b", second),
        elementOf("a", first) + "<!-- <data>" + QByteArray(700'000, 'A') + " -->" + elementOf("b", second),
        elementOf("a", "<string><![CDATA[<data>" + QByteArray(700'000, 'A') + "]]></string>") + elementOf("b", second),
        elementOf("wrapped", QByteArray(first).replace("AB", "A\n\t\tB")),
    };
    const QByteArray head = "<?xml version=\"1.0\"?>\n<plist version=\"1.0\"><dict>\n";
    const QByteArray third = "<data>" + dataOf(300'000, 3).toBase64() + "</data>";
    for (qsizetype before = 0; before < 8; ++before) { // the tag on the border of what is read at a time
        const QByteArray keys = elementOf("a", "<string></string>") + "<key>b</key>";
        const QByteArray filling(256 * 1024 - before - head.size() - keys.size(), 'y');
        lists.push_back(elementOf("a", "<string>" + filling + "</string>") + elementOf("b", third));
        ASSERT_EQ((head + lists.back()).indexOf("<data>"), 256 * 1024 - before);
    }
    // What the list tells of its data may be right, or of another state of it.
    const QByteArray told[] = {"", "<?large-data 1200004 666671?>", "<?large-data 666669 1200004?>",
                               "<?large-data 1200000 x 99999999999999999999?>", "<?large-data -5?>"};
    for (std::size_t i = 0; i < lists.size() * std::size(told); ++i) {
        SCOPED_TRACE(i);
        const QByteArray &list = lists[i / std::size(told)];
        write(QByteArray(head).replace("<plist", told[i % std::size(told)] + "<plist") + list + "</dict></plist>\n");
        const auto plain = parsePropertyList(head + list + "</dict></plist>\n");
        ASSERT_TRUE(plain);
        QVariantMap expected = plain.value().toMap();
        ASSERT_GE(expected.size(), 1);
        DefaultsDomain domain(kIdentifier);
        EXPECT_TRUE(domain.storedObjects() == expected);
        for (auto entry = expected.begin(); entry != expected.end(); ++entry)
            EXPECT_TRUE(domain.object(entry.key()) == *entry) << entry.key().toStdString();
        for (const int change : {1, 2}) {
            ASSERT_TRUE(domain.setObject("change", change) && domain.synchronize());
            expected.insert("change", qlonglong(change));
            EXPECT_TRUE(domain.storedObjects() == expected);
            EXPECT_TRUE(parsePropertyList(test::contents(path())).value().toMap() == expected);
        }
    }
}

TEST(DefaultsDomain, LargeDataAreSetReplacedAndRemovedLikeEverythingElse) {
    const QString key = "list";
    const QByteArray first = dataOf(3'000'000, 1), second = dataOf(2'000'000, 2);
    DefaultsDomain domain(kIdentifier), other(kIdentifier);
    EXPECT_FALSE(other.object(key).isValid());
    ASSERT_TRUE(domain.setObject(key, first));
    EXPECT_TRUE(domain.object(key) == first) << "not saved yet";
    ASSERT_TRUE(domain.synchronize());
    EXPECT_TRUE(domain.object(key) == first);
    EXPECT_TRUE(other.object(key) == first) << "another program's change is seen";
    ASSERT_TRUE(other.setObject(key, second) && other.setObject("k", 1) && other.synchronize());
    EXPECT_TRUE(domain.object(key) == second);
    ASSERT_TRUE(domain.setObject("k", 2) && domain.synchronize());
    EXPECT_TRUE(other.object(key) == second);
    ASSERT_TRUE(domain.setObject(key, 5) && domain.synchronize());
    EXPECT_EQ(other.object(key), 5) << "no longer large";
    ASSERT_TRUE(domain.setObject(key, first) && domain.synchronize() && domain.setObject(key, {}));
    EXPECT_FALSE(domain.object(key).isValid());
    ASSERT_TRUE(domain.synchronize());
    EXPECT_FALSE(other.object(key).isValid());
    EXPECT_EQ(other.object("k"), 2);
}

TEST(DefaultsDomain, AFileCutWithinLargeDataIsDamagedAndKeptWhole) {
    const QByteArray cut = "<plist><dict><key>list</key><data>" + dataOf(2'000'000, 1).toBase64();
    write(cut);
    DefaultsDomain domain(kIdentifier);
    EXPECT_FALSE(domain.object("list").isValid());
    ASSERT_EQ(damagedCopies().size(), 1);
    EXPECT_TRUE(test::contents(configurationFolder() + '/' + damagedCopies().first()) == cut);
}

TEST(DefaultsDomain, OnlyPropertyListValuesAreTaken) {
    DefaultsDomain domain(kIdentifier);
    EXPECT_FALSE(domain.setObject("k", std::numeric_limits<double>::quiet_NaN()));
    EXPECT_FALSE(domain.setObject("k", QVariantList{QVariant::fromValue(PropertyListUid{1})}));
    EXPECT_FALSE(domain.object("k").isValid());
}

TEST(PropertyList, PythonReadsWhatIsStoredAndWeReadWhatPythonStores) {
    const QVariantMap values = {{"integer", qlonglong(-5)},
                                {"large", std::numeric_limits<qlonglong>::max()},
                                {"real", 0.1},
                                {"yes", true},
                                {"text", "a<b&\"é\U0001F3B5"},
                                {"control", "x\x01y"},
                                {"data", QByteArray("\x00\xff", 2)},
                                {"date", QDateTime(QDate(2024, 3, 5), QTime(14, 7, 9), Qt::UTC)},
                                {"list", QVariantList{1, "b", QVariantMap{}}}};
    DefaultsDomain domain(kIdentifier);
    for (auto entry = values.begin(); entry != values.end(); ++entry)
        ASSERT_TRUE(domain.setObject(entry.key(), entry.value()));
    ASSERT_TRUE(domain.synchronize());
    EXPECT_EQ(runPython(QStringLiteral("import plistlib, sys, datetime\n"
                                       "d = plistlib.load(open(sys.argv[1], 'rb'))\n"
                                       "assert d.pop('control') == 'xy'\n"
                                       "assert d == {'integer': -5, 'large': 2**63 - 1, 'real': 0.1, 'yes': True,\n"
                                       "  'text': 'a<b&\"\\u00e9\\U0001F3B5', 'data': b'\\0\\xff',\n"
                                       "  'date': datetime.datetime(2024, 3, 5, 14, 7, 9), 'list': [1, 'b', {}]}, d\n"
                                       "for form in ('XML', 'BINARY'):\n"
                                       "  plistlib.dump(d, open(sys.argv[1] + form, 'wb'),\n"
                                       "    fmt=getattr(plistlib, 'FMT_' + form))\n"),
                        {path()}),
              "");
    QVariantMap expected = values;
    expected.remove("control");
    for (const char *form : {"XML", "BINARY"}) {
        const auto read = parsePropertyList(test::contents(path() + form));
        ASSERT_TRUE(read.ok()) << form;
        EXPECT_EQ(read.value().toMap(), expected) << form;
    }
}

QByteArray nested(int levels, const QByteArray &inside = {}) {
    return "<plist>" + QByteArray("<array>").repeated(levels) + inside + QByteArray("</array>").repeated(levels)
           + "</plist>";
}

QByteArray withEntities(const QByteArray &declarations) {
    return "<!DOCTYPE plist [" + declarations + "]><plist><string>x</string></plist>";
}

TEST(PropertyList, WhatIsNoneIsAFailure) {
    const QByteArray ends = "<!--" + QByteArray("</dict>").repeated(50'000) + "-->";
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("<plist/>"), QByteArray("bplist00"), nested(201), nested(100'000, ends),
          QByteArray("<plist>" + ends + QByteArray("<array>").repeated(100'000)),
          QByteArray("<plist><string>a\0b</string></plist>", 32), QByteArray("\0", 1),
          QByteArray("<plist><dict><string>no key</string></dict></plist>"),
          QByteArray("<plist><array>text</array></plist>"), QByteArray("<plist><integer>7<true/></integer></plist>"),
          QByteArray("<plist><colour>red</colour></plist>"),
          QByteArray("<plist><integer>18446744073709551616</integer></plist>"),
          QByteArray("<plist><date>soon</date></plist>"), withEntities("<!ENTITY % e 'x'>"),
          withEntities("<!ENTITY e SYSTEM 'file:///etc/hostname'>")})
        EXPECT_FALSE(parsePropertyList(bytes).ok()) << bytes.left(60).toStdString();
}

TEST(PropertyList, WhatIsValidIsReadHoweverItIsLaidOut) {
    const QByteArray siblings = "<plist><array>" + QByteArray("<dict/>").repeated(10'000) + "</array></plist>";
    EXPECT_EQ(parsePropertyList(siblings).value().toList().size(), 10'000);
    EXPECT_TRUE(parsePropertyList(nested(200, "<!--" + QByteArray("<array>").repeated(50'000) + "-->")).ok());
    const struct {
        const char *text;
        QVariant value;
    } cases[] = {{"<integer>18446744073709551615</integer>", std::numeric_limits<qulonglong>::max()},
                 {"<integer>-9223372036854775808</integer>", std::numeric_limits<qlonglong>::min()},
                 {"<integer> +0x1F </integer>", qlonglong(31)},
                 {"<string> a&amp;<![CDATA[<b>]]>&#233; </string>", " a&<b>é "},
                 {"<string>cr&#13;\nlf</string>", "cr\r\nlf"},
                 {"<data>\n\tAP8=\n</data>", QByteArray("\x00\xff", 2)},
                 {"<date>2024-03-05T14:07:09Z</date>", QDateTime(QDate(2024, 3, 5), QTime(14, 7, 9), Qt::UTC)}};
    for (const auto &c : cases) {
        const auto read = parsePropertyList(QByteArray("<plist>") + c.text + "</plist>");
        ASSERT_TRUE(read.ok()) << c.text;
        EXPECT_EQ(read.value(), c.value) << c.text;
        EXPECT_EQ(read.value().metaType(), c.value.metaType()) << c.text;
        for (const QByteArray &again : {propertyListXml(c.value), propertyListBinary(c.value)})
            EXPECT_EQ(parsePropertyList(again).value(), c.value) << c.text;
    }
}

} // namespace
} // namespace cantorel::foundation
