#pragma once

#include <QPoint>
#include <QVariant>

#include "oxBaseService.h"
#include "oxdDataObjects.h"

/// An interface with operations of every kind, as a host's libraries would have it.
class EchoService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "EchoService")

public:
    using oxBaseService::oxBaseService;

public Q_SLOTS:
    virtual int sum(int a, int b) const { return call<int>(staticMetaObject, "sum(int,int)", a, b); }
    virtual QString text(const QString &value) { return call<QString>(staticMetaObject, "text(QString)", value); }
    virtual QByteArray bytes(const QByteArray &value)
    {
        return call<QByteArray>(staticMetaObject, "bytes(QByteArray)", value);
    }
    virtual QVariant variant(const QVariant &value)
    {
        return call<QVariant>(staticMetaObject, "variant(QVariant)", value);
    }
    virtual oxdMaterial material(const oxdMaterial &value)
    {
        return call<oxdMaterial>(staticMetaObject, "material(oxdMaterial)", value);
    }
    virtual QList<oxdMaterial> materials(const QList<oxdMaterial> &value)
    {
        return call<QList<oxdMaterial>>(staticMetaObject, "materials(QList<oxdMaterial>)", value);
    }
    /// The same, without a signal.
    virtual QList<oxdMaterial> materialsBack(const QList<oxdMaterial> &value)
    {
        return call<QList<oxdMaterial>>(staticMetaObject, "materialsBack(QList<oxdMaterial>)", value);
    }
    virtual QVector<oxdNode> nodes(const QVector<oxdNode> &value)
    {
        return call<QVector<oxdNode>>(staticMetaObject, "nodes(QVector<oxdNode>)", value);
    }
    virtual void note(const QString &value) { call(staticMetaObject, "note(QString)", value); }
    /// Signals progress(0) to progress(count - 1), then answers.
    virtual int count(int count) { return call<int>(staticMetaObject, "count(int)", count); }
    /// Answers only after that many milliseconds, and sends progress(0) meanwhile where asked to.
    virtual bool takeTime(int milliseconds, bool showsProgress)
    {
        return call<bool>(staticMetaObject, "takeTime(int,bool)", milliseconds, showsProgress);
    }
    /// The same, by processing events in a loop of its own; answers with its argument.
    virtual QString textLater(const QString &value, int milliseconds)
    {
        return call<QString>(staticMetaObject, "textLater(QString,int)", value, milliseconds);
    }
    /// Answers only after that many milliseconds, and serves nobody meanwhile.
    virtual bool block(int milliseconds) { return call<bool>(staticMetaObject, "block(int)", milliseconds); }

Q_SIGNALS:
    void progress(int value);
    void noted(const QString &value);
    void variantChanged(const QVariant &value);
    void materialsChanged(const QList<oxdMaterial> &materials);
};
