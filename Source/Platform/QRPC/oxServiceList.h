#pragma once

#include <QObject>
#include <QStringList>

/// The interfaces that a main process offers, as its first object on the connection: it tells a
/// client what to ask for, and that somebody is there.
class oxServiceList : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "oxQRPCServiceList")
    Q_PROPERTY(QStringList names READ names NOTIFY namesChanged)

public:
    using QObject::QObject;

    static QString remoteName() { return QStringLiteral("oxQRPCServiceList"); }

    QStringList names() const { return m_names; }
    void setNames(const QStringList &names)
    {
        m_names = names;
        Q_EMIT namesChanged(names);
    }

Q_SIGNALS:
    void namesChanged(const QStringList &names);

private:
    QStringList m_names;
};
