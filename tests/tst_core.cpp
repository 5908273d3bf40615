// What runs of the tool do not test completely.

#include "core/updatermanager.h"
#include "fs/disk.h"
#include "tests/device.h"

#include <QDomDocument>
#include <QtTest>

class TestCore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("XDG_DATA_HOME", QFile::encodeName(device.path("data"))); }
    void logCommitsALineWithTheNextOne();
    void configurationLiesBelowTheRoot();
    void fileManagerNamesItsDirectory();
    void searchListsDepthFirstAndFollowsLinks();
    void unreadableSourceIsNoEqualContent();

private:
    const Device device;
};

void TestCore::logCommitsALineWithTheNextOne()
{
    static QStringList messages;
    const auto handler = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &text) { messages << text; });
    for (const bool verbose : {true, false}) {
        const UpdaterManager manager("/", verbose, nullptr);
        manager.info() << "A" << QString("say \"B\"") << QByteArray("ä\n") << 7;
        QCOMPARE(manager.getOutputLog(), QStringList(""));
        manager.info() << QStringList{"a b", "c"} << FileList{"d", "e"};
        manager.info() << "never committed";
        QCOMPARE(manager.getOutputLog().join("|"),
                 QString("|A say \"B\" ä\n 7 |(a b, c) std::vector(d, e) "));
        QVERIFY(messages.isEmpty() || !verbose);
    }
    qInstallMessageHandler(handler);
    const QString echo = " \nA say \"B\" ä\n 7  \n(a b, c) std::vector(d, e)  \n";
    QCOMPARE(messages, QStringList({echo, ""}));
}

void TestCore::configurationLiesBelowTheRoot()
{
    const QString configuration = device.path("data/.ostrelsmart");
    const std::map<QString, QString> prefixes = {
        {"/", ""}, {"/mnt/image/", "/mnt/image"}, {"image/..", QDir::currentPath()}};
    for (const auto &[root, prefix] : prefixes)
        QCOMPARE(UpdaterManager(root, false, nullptr).getConfigPath().path(),
                 prefix + configuration);
    QVERIFY(!QDir(configuration).exists());
}

void TestCore::fileManagerNamesItsDirectory()
{
    const QString common = device.path("data/.ostrelsmart");
    QCOMPARE(FileManager("a", FileManager::ApplicationRoot).getDirectory().path(),
             QCoreApplication::applicationDirPath() + "/a");
    QCOMPARE(FileManager("a", static_cast<FileManager::Root>(2)).getDirectory(), QDir("."));

    const FileManager manager("x/y", FileManager::DataRoot);
    QCOMPARE(FileManager("a", FileManager::DataRoot).getParentDirectory().path(), common);
    manager.createDirectory();
    QVERIFY(QDir(common + "/x/y").exists());
    device.write(common + "/x/y", "good.xml=<a><b/></a>; bad.xml=<a>");
    QVERIFY(manager.exists("good.xml") && !manager.exists("other.xml"));
    QDomDocument document;
    QVERIFY(!manager.readFromFile(&document, "other.xml"));
    QVERIFY(!manager.readFromFile(&document, "bad.xml"));
    QVERIFY(manager.readFromFile(&document, "good.xml"));
    QCOMPARE(document.documentElement().firstChild().nodeName(), QString("b"));
}

void TestCore::searchListsDepthFirstAndFollowsLinks()
{
    const QDir start(device.path("tree"));
    device.write("tree", ":e.txt; b.txt; A.TXT; c.md; .h.txt; .hid/x.txt; a.txt/c.txt; "
                         ":g/:h.txt; Sub/d/ë f.txt");
    QFile::link(device.path("tree/Sub/d"), device.path("tree/again"));
    QFile::link(device.path("tree"), device.path("tree/Sub/d/cycle"));
    QFile::link("nowhere", device.path("tree/broken.txt"));
    QFile::link("b.txt", device.path("tree/link.txt"));
    QCOMPARE(FileManager::findFiles(start, {"*.txt"}),
             FileList({":e.txt", "A.TXT", "b.txt", "link.txt", ":g/:h.txt", "a.txt/c.txt",
                       "again/ë f.txt", "Sub/d/ë f.txt"}));
    QCOMPARE(FileManager::findFiles(start, {}).size(), std::size_t(9));
    QVERIFY(FileManager::findFiles(QDir(device.path("absent")), {"*"}).empty());
}

void TestCore::unreadableSourceIsNoEqualContent()
{
    device.write("", "empty=");
    const QString empty = device.path("empty");
    const QString unreadable = "/proc/self/mem"; // at its start
    const QString problem = "could not be verified: /proc/self/mem: Input/output error";
    QCOMPARE(Disk::compareCopy(unreadable, empty), problem);
    QCOMPARE(Disk::compareCopy(empty, unreadable), problem);
    QVERIFY(Disk::compareCopy(device.path("absent"), empty).contains("absent: No such file"));
}

QTEST_GUILESS_MAIN(TestCore)
#include "tst_core.moc"
