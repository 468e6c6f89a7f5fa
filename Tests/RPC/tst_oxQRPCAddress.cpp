#include <QTest>

#include <unistd.h>

#include "oxQRPCAddress.h"
#include "oxQRPCServer.h"

class tst_oxQRPCAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sessionIsALocalSocketOfTheUser();
    void emptySessionIsOneToo();
    void sessionsOfOtherNamesAreOthers();
    void addressSurvivesBeingWritten_data();
    void addressSurvivesBeingWritten();
};

void tst_oxQRPCAddress::sessionIsALocalSocketOfTheUser()
{
    QCOMPARE(oxQRPCAddress::ofSession(QStringLiteral("a")).toString(), QStringLiteral("local:ox-%1-a").arg(getuid()));
}

void tst_oxQRPCAddress::emptySessionIsOneToo()
{
    QCOMPARE(oxQRPCAddress::ofSession(QString()).toString(), QStringLiteral("local:ox-%1-default").arg(getuid()));
}

void tst_oxQRPCAddress::sessionsOfOtherNamesAreOthers()
{
    QVERIFY(oxQRPCAddress::ofSession(QStringLiteral("a")) != oxQRPCAddress::ofSession(QStringLiteral("b")));
}

void tst_oxQRPCAddress::addressSurvivesBeingWritten_data()
{
    QTest::addColumn<QString>("session");
    for (const char *session : {"plain", "two words", "100%", "50%41", "a#b?c", "Gr\u00f6\u00dfe", "a:b@c"})
        QTest::newRow(session) << QString::fromUtf8(session);
}

void tst_oxQRPCAddress::addressSurvivesBeingWritten()
{
    QFETCH(QString, session);
    const QUrl address = oxQRPCAddress::ofSession(session);
    QCOMPARE(QUrl(address.toString()).path(), address.path());
    QVERIFY(address.path().endsWith(session));

    oxQRPCServer server;
    QVERIFY2(server.listen(address), qPrintable(server.errorString()));
}

QTEST_GUILESS_MAIN(tst_oxQRPCAddress)
#include "tst_oxQRPCAddress.moc"
