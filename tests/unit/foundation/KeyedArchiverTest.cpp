#include "platform/foundation/KeyedArchiver.h"

#include "platform/foundation/BinaryPropertyList.h"
#include "platform/foundation/ChildProcess.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <random>

namespace cantorel::foundation {
namespace {

using Map = QVariantMap;

QVariant uid(quint64 number) { return QVariant::fromValue(PropertyListUid{number}); }

QVariantMap classNamed(const char *name) {
    return {{QStringLiteral("$classname"), QString::fromLatin1(name)}, {QStringLiteral("$classes"), QVariantList{}}};
}

// An archive in the platform's shape around the given objects, whose first is put in here.
QByteArray archiveOf(QVariantList objects, const QVariant &root = uid(1)) {
    objects.prepend(QStringLiteral("$null"));
    return propertyListBinary(Map{{QStringLiteral("$version"), 100000},
                                  {QStringLiteral("$archiver"), QStringLiteral("NSKeyedArchiver")},
                                  {QStringLiteral("$top"), Map{{QStringLiteral("root"), root}}},
                                  {QStringLiteral("$objects"), objects}});
}

QVariantMap arrayOf(const QVariantList &items, int type) {
    return {{QStringLiteral("NS.objects"), items}, {QStringLiteral("$class"), uid(static_cast<quint64>(type))}};
}

QVariant sample() {
    ArchivedObject item{QStringLiteral("RecordedAudioInfo"), {}};
    item.values = {{QStringLiteral("name"), QStringLiteral("Träck.m4a")},
                   {QStringLiteral("size"), qlonglong(1) << 40},
                   {QStringLiteral("negative"), qlonglong(-3)},
                   {QStringLiteral("length"), 12.25},
                   {QStringLiteral("tagged"), true},
                   {QStringLiteral("nothing"), QVariant()},
                   {QStringLiteral("cover"), QByteArray(300, '\xAB')},
                   {QStringLiteral("added"), QDateTime::fromMSecsSinceEpoch(1'700'000'000'250, Qt::UTC)},
                   {QStringLiteral("frame"), QRectF(0.1, -2, 1e300, 4)},
                   {QStringLiteral("map"), QVariantMap{{QStringLiteral("k"), QStringLiteral("v")}}}};
    return QVariantList{QVariant::fromValue(item), QStringLiteral("plain"), qlonglong(7),
                        QVariantList{QVariant::fromValue(item)}, QVariant()};
}

TEST(KeyedArchiver, WhatIsArchivedComesBack) {
    QVariantList many; // more than numbers of two bytes can name
    for (int i = 0; i < 70'000; ++i)
        many << QString::number(i);
    for (const QVariant &value :
         {sample(), QVariant(QVariantList()), QVariant(QRectF(1, 2, 3, 4)), QVariant(), QVariant(many)}) {
        const auto back = unarchivedObject(archivedData(value));
        ASSERT_TRUE(back.has_value());
        EXPECT_TRUE(*back == value);
    }
}

TEST(KeyedArchiver, OtherToolsReadItsShape) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("archive"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(archivedData(sample()));
    file.close();
    const auto python = ChildProcess::run(
        {QStringLiteral("python3"),
         {QStringLiteral("-c"),
          QStringLiteral("import plistlib, sys\n"
                         "d = plistlib.load(open(sys.argv[1], 'rb'))\n"
                         "assert d['$archiver'] == 'NSKeyedArchiver' and d['$version'] == 100000\n"
                         "o = d['$objects']; at = lambda u: o[u.data]\n"
                         "assert o[0] == '$null'\n"
                         "root = at(d['$top']['root'])\n"
                         "assert at(root['$class'])['$classes'] == ['NSMutableArray', 'NSArray', 'NSObject']\n"
                         "item = at(root['NS.objects'][0])\n"
                         "assert at(item['$class'])['$classname'] == 'RecordedAudioInfo'\n"
                         "assert at(item['name']) == 'Tr\\u00e4ck.m4a' and item['size'] == 2**40\n"
                         "assert item['negative'] == -3 and item['tagged'] is True and item['nothing'].data == 0\n"
                         "assert at(item['cover']) == b'\\xab' * 300\n"
                         "plistlib.dump(d, open(sys.argv[1] + '2', 'wb'), fmt=plistlib.FMT_BINARY)\n"),
          path},
         {},
         {}});
    ASSERT_TRUE(python.ok());
    EXPECT_EQ(python.value().output, "");
    const auto tool = ChildProcess::run({QStringLiteral("plistutil"),
                                         {QStringLiteral("-i"), path, QStringLiteral("-o"), path + QLatin1Char('x')},
                                         {},
                                         {}});
    ASSERT_TRUE(tool.ok());
    EXPECT_TRUE(tool.value().ending.succeeded());
    QFile again(path + QLatin1Char('2')); // as another writer lays it out, with shared objects
    ASSERT_TRUE(again.open(QIODevice::ReadOnly));
    EXPECT_EQ(unarchivedObject(again.readAll()), sample());
}

TEST(KeyedArchiver, HostileArchivesGiveNothing) {
    const auto array = classNamed("NSArray");
    QVariantList deep{};
    for (quint64 level = 2; level < 100'000; ++level)
        deep << arrayOf({uid(level + 1)}, 1);
    deep << QStringLiteral("the end");
    deep.prepend(array);
    const struct {
        const char *what;
        QByteArray bytes;
    } cases[] = {
        {"no objects", propertyListBinary(Map{{QStringLiteral("$top"), Map{}}})},
        {"objects that are no list",
         propertyListBinary(
             Map{{QStringLiteral("$top"), Map{{QStringLiteral("root"), uid(0)}}}, {QStringLiteral("$objects"), 5}})},
        {"a root that is no reference", archiveOf({}, 3)},
        {"a root out of range", archiveOf({}, uid(77))},
        {"an item out of range", archiveOf({arrayOf({uid(99)}, 2), array})},
        {"an enormous reference", archiveOf({arrayOf({uid(0xFFFF'FFFF)}, 2), array})},
        {"an array that holds itself", archiveOf({arrayOf({uid(1)}, 2), array})},
        {"two that hold each other", archiveOf({arrayOf({uid(2)}, 3), arrayOf({uid(1)}, 3), array})},
        {"a class that is itself", archiveOf({arrayOf({}, 1)})},
        {"a class out of range", archiveOf({arrayOf({}, 50)})},
        {"an object without class", archiveOf({Map{{QStringLiteral("a"), 1}}})},
        {"a class without name", archiveOf({arrayOf({}, 2), Map{}})},
        {"items that are no list",
         archiveOf({Map{{QStringLiteral("NS.objects"), 1}, {QStringLiteral("$class"), uid(2)}}, array})},
        {"items that are no references", archiveOf({arrayOf({1}, 2), array})},
        {"a rectangle of words",
         archiveOf({Map{{QStringLiteral("NS.rectval"), uid(3)}, {QStringLiteral("$class"), uid(2)}},
                    classNamed("NSValue"), QStringLiteral("{{a, b}, {c, d}}")})},
        {"a hundred thousand levels", archiveOf(deep, uid(2))},
        {"xml", propertyListXml(Map{})},
        {"empty", {}},
    };
    for (const auto &c : cases)
        EXPECT_FALSE(unarchivedObject(c.bytes).has_value()) << c.what;
}

// Counts and offsets that point beyond the file, in a list that is otherwise whole.
TEST(KeyedArchiver, HugeCountsAreRefusedBeforeAnythingIsAllocated) {
    QByteArray huge("bplist00");
    huge += QByteArray("\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10);
    huge += QByteArray(1, '\x08');
    huge += QByteArray(6, '\0') + QByteArray("\x01\x01", 2);
    huge += QByteArray("\0\0\0\0\0\0\0\x01", 8) + QByteArray(8, '\0') + QByteArray("\0\0\0\0\0\0\0\x12", 8);
    EXPECT_FALSE(readBinaryPropertyList(huge).has_value());
}

// A million arrays that are all the same hundred thousand bytes would be read for hours.
TEST(KeyedArchiver, ObjectsThatOverlapToMultiplyThemselvesAreGivenUp) {
    constexpr int kRefs = 50'000, kObjects = 50'000;
    QByteArray bytes("bplist00");
    const auto number = [&](std::uint64_t value, int size) {
        for (int i = size - 1; i >= 0; --i)
            bytes.append(static_cast<char>(value >> (8 * i)));
    };
    bytes.append("\xAF\x12");
    number(kRefs, 4);
    for (int i = 0; i < kRefs; ++i)
        number(static_cast<std::uint64_t>(i + 1), 3);
    const auto table = static_cast<std::uint64_t>(bytes.size());
    for (int i = 0; i <= kObjects; ++i)
        number(8, 4);
    bytes.append(6, '\0').append("\x04\x03");
    number(kObjects + 1, 8);
    number(0, 8);
    number(table, 8);
    EXPECT_FALSE(readBinaryPropertyList(bytes).has_value());
}

TEST(KeyedArchiver, NoDamageOfBytesDoesMoreThanGiveSomethingElseOrNothing) {
    const QByteArray whole = archivedData(sample());
    for (qsizetype length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(unarchivedObject(whole.first(length)).has_value()) << length;
    std::mt19937 random(7);
    for (int round = 0; round < 20'000; ++round) {
        QByteArray damaged = whole;
        for (int change = 0; change < 3; ++change)
            damaged[static_cast<qsizetype>(random() % static_cast<unsigned>(damaged.size()))] =
                static_cast<char>(random());
        (void)unarchivedObject(damaged); // the sanitizers watch
    }
}

TEST(BinaryPropertyList, SharedObjectsAreMadeOnceAndRefusedWhereTheyMultiply) {
    for (const int levels : {10, 60}) {
        BinaryPlistWriter writer;
        auto level = writer.text(QStringLiteral("x"));
        for (int i = 0; i < levels; ++i) {
            const BinaryPlistWriter::Ref twice[] = {level, level};
            level = writer.array(twice);
        }
        // Written out, 60 levels are 2^60 leaves.
        EXPECT_EQ(readBinaryPropertyList(writer.finish(level)).has_value(), levels == 10);
    }
}

} // namespace
} // namespace cantorel::foundation
