#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

#include <sys/stat.h>

#include "OutputCapture.h"
#include "oxFileIOService.h"
#include "oxQRPCClient.h"

class tst_oxFileIOService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void progressAscendsTo100AndStaysThere_data();
    void progressAscendsTo100AndStaysThere();
    void largeFileTellsEachPerCent();
    void fileWithoutASizeIsReadToItsEnd();
    void fileThatIsCutWhileItLoads();
    void fileThatGrowsWhileItLoads();
    void fileThatCannotBeOpenedGivesFalseAndNoProgress_data();
    void fileThatCannotBeOpenedGivesFalseAndNoProgress();
    void fileThatCannotBeReadGivesFalseAndNeverReaches100();
    void loadNeedsNoConnectionAndPrintsNothing();
    void sameServiceLoadsAgain();

private:
    QString write(const QString &name, int size) const;
    QVector<int> progressOf(const QString &file, bool expectedResult);

    QTemporaryDir m_folder;
    oxFileIOService m_service;
};

QString tst_oxFileIOService::write(const QString &name, int size) const
{
    QFile file(m_folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray(size, 'x')) != size)
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

QVector<int> tst_oxFileIOService::progressOf(const QString &file, bool expectedResult)
{
    const QSignalSpy spy(&m_service, &oxFileIOService::progress);
    const bool result = m_service.loadFile(file);
    [&] { QCOMPARE(result, expectedResult); }();
    QVector<int> values;
    for (const QList<QVariant> &arguments : spy)
        values.append(arguments.first().toInt());
    return values;
}

void tst_oxFileIOService::progressAscendsTo100AndStaysThere_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("size");

    QTest::newRow("empty") << QStringLiteral("empty") << 0;
    QTest::newRow("one byte") << QStringLiteral("one") << 1;
    QTest::newRow("one piece") << QStringLiteral("piece") << 64 * 1024;
    QTest::newRow("a byte more") << QStringLiteral("more") << 64 * 1024 + 1;
    QTest::newRow("many pieces") << QStringLiteral("many") << 3000000;
    QTest::newRow("name with everything") << QStringLiteral("Gr\u00f6\u00dfe 100% %s\n'\"\\.bin") << 100000;
}

void tst_oxFileIOService::progressAscendsTo100AndStaysThere()
{
    QFETCH(QString, name);
    QFETCH(int, size);
    const QVector<int> values = progressOf(write(name, size), true);

    QCOMPARE(values.first(), 0);
    const auto end = std::find(values.begin(), values.end(), 100);
    QVERIFY(end != values.end());
    QVERIFY(std::adjacent_find(values.begin(), end, std::greater_equal<int>()) == end);
    QVERIFY(std::all_of(end, values.end(), [](int value) { return value == 100; }));
    QCOMPARE(values.count(100), size == 0 ? 1 : values.indexOf(100)); // the upload takes as long
}

void tst_oxFileIOService::largeFileTellsEachPerCent()
{
    const QVector<int> values = progressOf(write(QStringLiteral("large"), 20000000), true);
    for (int percent = 0; percent < 100; ++percent)
        QCOMPARE(values.at(percent), percent);
    QCOMPARE(values.count(100), 100);
}

void tst_oxFileIOService::fileWithoutASizeIsReadToItsEnd()
{
    const QString file = QStringLiteral("/proc/self/status");
    QCOMPARE(QFileInfo(file).size(), qint64(0));

    const QVector<int> values = progressOf(file, true);
    QCOMPARE(values.first(), 0);
    QCOMPARE(values.last(), 100);
}

void tst_oxFileIOService::fileThatIsCutWhileItLoads()
{
    const QString name = write(QStringLiteral("cut"), 1000000);
    connect(&m_service, &oxFileIOService::progress, &m_service, [name](int percent) {
        if (percent > 20 && percent < 100)
            QFile::resize(name, 1000);
    });
    const QVector<int> values = progressOf(name, true);
    m_service.disconnect();

    QVERIFY(values.contains(100));
    QVERIFY(!values.contains(60));
}

void tst_oxFileIOService::fileThatGrowsWhileItLoads()
{
    const QString name = write(QStringLiteral("growing"), 1000000);
    connect(&m_service, &oxFileIOService::progress, &m_service, [name](int percent) {
        if (percent == 0)
            QFile::resize(name, 2000000);
    });
    const QVector<int> values = progressOf(name, true);
    m_service.disconnect();

    QCOMPARE(*std::max_element(values.begin(), values.end()), 100);
    QCOMPARE(values.last(), 100);
}

void tst_oxFileIOService::fileThatCannotBeOpenedGivesFalseAndNoProgress_data()
{
    QTest::addColumn<QString>("file");

    const QString pipe = m_folder.filePath(QStringLiteral("pipe"));
    QVERIFY(QFile::exists(pipe) || mkfifo(qPrintable(pipe), 0600) == 0);
    QTest::newRow("missing") << m_folder.filePath(QStringLiteral("nobody"));
    QTest::newRow("no name") << QString();
    QTest::newRow("folder") << m_folder.path();
    QTest::newRow("pipe without a writer") << pipe;
    QTest::newRow("endless device") << QStringLiteral("/dev/zero");
    QTest::newRow("below a file") << write(QStringLiteral("file"), 1) + QStringLiteral("/scene");
    QTest::newRow("NUL in the name") << m_folder.filePath(QStringLiteral("file") + QChar() + QStringLiteral("x"));
}

void tst_oxFileIOService::fileThatCannotBeOpenedGivesFalseAndNoProgress()
{
    QFETCH(QString, file);
    QVERIFY(progressOf(file, false).isEmpty());
}

void tst_oxFileIOService::fileThatCannotBeReadGivesFalseAndNeverReaches100()
{
    // A regular file to the system; nothing is mapped at its start.
    QCOMPARE(progressOf(QStringLiteral("/proc/self/mem"), false), QVector<int>{0});
}

void tst_oxFileIOService::loadNeedsNoConnectionAndPrintsNothing()
{
    oxQRPCClient client;
    m_service.setClient(&client);
    bool isLoaded = false;
    const Output output = outputOf([&] {
        isLoaded = m_service.loadFile(write(QStringLiteral("quiet"), 100));
        m_service.loadFile(QStringLiteral("/nowhere/scene"));
    });
    m_service.setClient(nullptr);

    QVERIFY(isLoaded);
    QCOMPARE(output.standardOutput + output.standardError, QByteArray());
}

void tst_oxFileIOService::sameServiceLoadsAgain()
{
    const QString file = write(QStringLiteral("again"), 300000);
    QCOMPARE(progressOf(file, true), progressOf(file, true));
}

QTEST_GUILESS_MAIN(tst_oxFileIOService)
#include "tst_oxFileIOService.moc"
