#include <QTest>

#include "oxPlatform.h"

using Getter = const char *(*)();
Q_DECLARE_METATYPE(Getter)

class tst_oxPlatform : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void folderIsTheVariablesValue_data();
    void folderIsTheVariablesValue();
    void folderIsNullWhereTheVariableIsUnset_data();
    void folderIsNullWhereTheVariableIsUnset();
    void eachFolderHasItsOwnVariable();

private:
    static void addFolders();
};

void tst_oxPlatform::init()
{
    qunsetenv("OX_BASE_DIR");
    qunsetenv("OX_PLUGINS_DIR");
}

void tst_oxPlatform::addFolders()
{
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<Getter>("folder");

    QTest::newRow("base") << QByteArray("OX_BASE_DIR") << Getter(oxPlatform::getBaseDir);
    QTest::newRow("plugins") << QByteArray("OX_PLUGINS_DIR") << Getter(oxPlatform::getPluginsDir);
}

void tst_oxPlatform::folderIsTheVariablesValue_data()
{
    addFolders();
}

void tst_oxPlatform::folderIsTheVariablesValue()
{
    QFETCH(QByteArray, variable);
    QFETCH(Getter, folder);

    for (const QByteArray &value :
         {QByteArray("/opt/app"), QByteArray("relative/"), QByteArray("/\xc3\xa4 \"100 %s\"\n"), QByteArray("")}) {
        qputenv(variable, value);
        QVERIFY(folder());
        QCOMPARE(QByteArray(folder()), value);
    }
}

void tst_oxPlatform::folderIsNullWhereTheVariableIsUnset_data()
{
    addFolders();
}

void tst_oxPlatform::folderIsNullWhereTheVariableIsUnset()
{
    QFETCH(QByteArray, variable);
    QFETCH(Getter, folder);
    QVERIFY(!folder());

    qputenv(variable, "/opt/app");
    QVERIFY(folder());
    qunsetenv(variable);
    QVERIFY(!folder());
}

void tst_oxPlatform::eachFolderHasItsOwnVariable()
{
    qputenv("OX_BASE_DIR", "/base");
    QVERIFY(!oxPlatform::getPluginsDir());

    qputenv("OX_PLUGINS_DIR", "/plugins");
    QCOMPARE(QByteArray(oxPlatform::getBaseDir()), QByteArray("/base"));
    QCOMPARE(QByteArray(oxPlatform::getPluginsDir()), QByteArray("/plugins"));
}

QTEST_APPLESS_MAIN(tst_oxPlatform)
#include "tst_oxPlatform.moc"
