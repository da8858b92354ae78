#include "platform/foundation/KeyedArchiver.h"

#include "platform/foundation/BinaryPropertyList.h"
#include "platform/foundation/ChildProcess.h"
#include "tests/support/OrdinaryFile.h"

#include <QDateTime>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <random>

namespace cantorel::foundation {
namespace {

using Map = QVariantMap;

QVariant uid(quint64 number) { return QVariant::fromValue(PropertyListUid{number}); }

QVariantMap classNamed(const char *name) { return {{"$classname", name}, {"$classes", QVariantList{}}}; }

// An archive in the platform's shape around the given objects, whose first is put in here.
QByteArray archiveOf(QVariantList objects, const QVariant &root = uid(1)) {
    objects.prepend("$null");
    return propertyListBinary(Map{
        {"$version", 100000}, {"$archiver", "NSKeyedArchiver"}, {"$top", Map{{"root", root}}}, {"$objects", objects}});
}

QVariantMap arrayOf(const QVariantList &items, int type) {
    return {{"NS.objects", items}, {"$class", uid(static_cast<quint64>(type))}};
}

QVariant sample() {
    ArchivedObject item{"RecordedAudioInfo", {}};
    item.values = {{"name", "Träck.m4a"},
                   {"size", qlonglong(1) << 40},
                   {"negative", qlonglong(-3)},
                   {"length", 12.25},
                   {"tagged", true},
                   {"nothing", QVariant()},
                   {"cover", QByteArray(300, '\xAB')},
                   {"added", QDateTime::fromMSecsSinceEpoch(1'700'000'000'250, Qt::UTC)},
                   {"frame", QRectF(0.1, -2, 1e300, 4)},
                   {"map", QVariantMap{{"k", "v"}}}};
    return QVariantList{QVariant::fromValue(item), "plain", qlonglong(7), QVariantList{QVariant::fromValue(item)},
                        QVariant()};
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
        QVariantList items;
        EXPECT_EQ(unarchiveItems(archivedData(value), [&](const QVariant &item) { items << item; }),
                  value.typeId() == QMetaType::QVariantList);
        EXPECT_TRUE(items == value.toList());
    }
}

TEST(KeyedArchiver, OtherToolsReadItsShape) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("archive");
    test::store(path, archivedData(sample()));
    const auto python = ChildProcess::run(
        {"python3",
         {"-c",
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
    // as another writer lays it out, with shared objects
    EXPECT_EQ(unarchivedObject(test::contents(path + '2')), sample());
}

TEST(KeyedArchiver, HostileArchivesGiveNothing) {
    const auto array = classNamed("NSArray");
    QVariantList deep{};
    for (quint64 level = 2; level < 100'000; ++level)
        deep << arrayOf({uid(level + 1)}, 1);
    deep << "the end";
    deep.prepend(array);
    const struct {
        const char *what;
        QByteArray bytes;
    } cases[] = {
        {"no objects", propertyListBinary(Map{{"$top", Map{}}})},
        {"objects that are no list", propertyListBinary(Map{{"$top", Map{{"root", uid(0)}}}, {"$objects", 5}})},
        {"a root that is no reference", archiveOf({}, 3)},
        {"an item out of range", archiveOf({arrayOf({uid(99)}, 2), array})},
        {"an enormous reference", archiveOf({arrayOf({uid(0xFFFF'FFFF)}, 2), array})},
        {"two that hold each other", archiveOf({arrayOf({uid(2)}, 3), arrayOf({uid(1)}, 3), array})},
        {"a class that is itself", archiveOf({arrayOf({}, 1)})},
        {"a class without name", archiveOf({arrayOf({}, 2), Map{}})},
        {"items that are no list", archiveOf({Map{{"NS.objects", 1}, {"$class", uid(2)}}, array})},
        {"items that are no references", archiveOf({arrayOf({1}, 2), array})},
        {"a rectangle of words",
         archiveOf({Map{{"NS.rectval", uid(3)}, {"$class", uid(2)}}, classNamed("NSValue"), "{{a, b}, {c, d}}"})},
        {"a hundred thousand levels", archiveOf(deep, uid(2))},
        {"empty", {}},
    };
    for (const auto &c : cases)
        EXPECT_FALSE(unarchivedObject(c.bytes).has_value() || unarchiveItems(c.bytes, [](const QVariant &) {}))
            << c.what;
}

// Lists that hold the next one twice each: made at each naming, the last would be made 2^60 times.
TEST(KeyedArchiver, WhatIsNamedAgainAndAgainIsMadeTwiceAtMost) {
    constexpr quint64 kLevels = 60;
    QVariantList lists;
    for (quint64 level = 1; level < kLevels; ++level)
        lists << arrayOf({uid(level + 1), uid(level + 1)}, kLevels + 1);
    lists << "the end" << classNamed("NSArray");
    auto inner = unarchivedObject(archiveOf(lists));
    for (quint64 level = 1; level < kLevels && inner; ++level)
        inner = inner->toList().value(1);
    EXPECT_EQ(inner, "the end");
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
        auto level = writer.text("x");
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
