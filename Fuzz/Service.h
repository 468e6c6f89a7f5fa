#pragma once

#include <QEasingCurve>
#include <QObject>
#include <QPoint>
#include <QVariant>

/// A service with operations and signals of many kinds, for either end of the connection.
class Service : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "Service")
    Q_PROPERTY(QString title MEMBER m_title NOTIFY titleChanged)
    Q_PROPERTY(QVariant note MEMBER m_note NOTIFY changed)
    Q_PROPERTY(int size MEMBER m_size NOTIFY resized)

public Q_SLOTS:
    int sum(int a, int b) const { return int(unsigned(a) + unsigned(b)); }
    QString text(const QString &value) { return value; }
    QVariant variant(const QVariant &value) { return value; }
    QVariantList list(const QVariantList &value) { return value; }
    QPoint point(QPoint value) { return value; }
    void note(const QString &value) { Q_EMIT noted(value); }
    QEasingCurve curve(const QEasingCurve &value) { return value; }

Q_SIGNALS:
    void noted(const QString &value);
    void changed(const QVariant &value);
    void titleChanged(const QString &value);
    void resized();

private:
    QString m_title;
    QVariant m_note;
    int m_size = 0;
};
