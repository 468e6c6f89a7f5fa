#pragma once

#include <QObject>
#include <QVariant>

#include "oxdDataObjects.h"

/// What the scripts of the test call: for each class a slot that gives a list of it, of the objects
/// 1, 2 and 3, and one that takes a list and gives it back.
class Exchanger : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    QVector<quint64> taken; ///< the ids of the list that was taken last
    QVariant takenVariant;
    QObject *lent = nullptr;

// moc reads this as the compiler does.
#define DECLARE_SLOTS(Class, Levels, Container, Python)                                                                \
public Q_SLOTS:                                                                                                        \
    QList<Class> give_##Class() const                                                                                  \
    {                                                                                                                  \
        return list<Class>();                                                                                          \
    }                                                                                                                  \
    QList<Class> exchange_##Class(const QList<Class> &objects)                                                         \
    {                                                                                                                  \
        return take(objects);                                                                                          \
    }
    OXD_CLASSES(DECLARE_SLOTS)
#undef DECLARE_SLOTS

    QVariant giveListInVariant() const
    {
        return QVariant::fromValue(list<oxdMaterial>());
    }
    QVariant giveVectorInVariant() const
    {
        return QVariant::fromValue(list<oxdMaterial>().toVector());
    }
    QVariant giveObjectInVariant() const
    {
        return QVariant::fromValue(list<oxdMaterial>().first());
    }
    oxdMaterial giveObject() const
    {
        return list<oxdMaterial>().first();
    }
    void takeVariant(const QVariant &variant)
    {
        takenVariant = variant;
    }
    QObject *lend() const
    {
        return lent;
    }

private:
    template<class T>
    static QList<T> list()
    {
        QList<T> objects{T(), T(), T()};
        for (int i = 0; i < objects.size(); ++i)
            objects[i].initialize(quint64(i) + 1);
        return objects;
    }

    template<class T>
    QList<T> take(const QList<T> &objects)
    {
        taken.clear();
        for (const T &object : objects)
            taken.append(object.objectId());
        return objects;
    }
};
