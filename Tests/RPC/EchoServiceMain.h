#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QPointer>
#include <QThread>
#include <QTimer>

#include "EchoService.h"

/// What answers in the main process.
class EchoServiceMain : public EchoService
{
    Q_OBJECT

public:
    int sum(int a, int b) const override { return a + b; }
    QString text(const QString &value) override { return value; }
    QByteArray bytes(const QByteArray &value) override { return value; }
    QVariant variant(const QVariant &value) override
    {
        Q_EMIT variantChanged(value);
        return value;
    }
    oxdMaterial material(const oxdMaterial &value) override { return value; }
    QList<oxdMaterial> materials(const QList<oxdMaterial> &value) override
    {
        Q_EMIT materialsChanged(value);
        return value;
    }
    QList<oxdMaterial> materialsBack(const QList<oxdMaterial> &value) override { return value; }
    QVector<oxdNode> nodes(const QVector<oxdNode> &value) override { return value; }
    void note(const QString &value) override { Q_EMIT noted(value); }
    int count(int count) override
    {
        for (int i = 0; i < count; ++i)
            Q_EMIT progress(i);
        return count;
    }
    bool takeTime(int milliseconds, bool showsProgress) override
    {
        QEventLoop loop;
        m_taking = &loop;
        QTimer signs;
        connect(&signs, &QTimer::timeout, this, [this] { Q_EMIT progress(0); });
        if (showsProgress)
            signs.start(20);
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
        loop.exec();
        return true;
    }
    /// Ends the time that takeTime() takes.
    void answerNow()
    {
        if (m_taking)
            m_taking->quit();
    }
    QString textLater(const QString &value, int milliseconds) override
    {
        Q_EMIT noted(value);
        const QDeadlineTimer end(milliseconds);
        while (!end.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return value;
    }
    bool block(int milliseconds) override
    {
        QThread::msleep(static_cast<unsigned long>(milliseconds));
        return true;
    }

private:
    QPointer<QEventLoop> m_taking;
};
