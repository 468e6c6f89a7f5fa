#pragma once

#include <QObject>
#include <QVariant>

#include "oxdDataObjects.h"

/// What the scripts of the test call: for each class slots that give a list of it, of the objects 1, 2
/// and 3, or of pointers to these and to none; and slots that take a list, or a single object.
class Exchanger : public QObject
{
    Q_OBJECT
    Q_PROPERTY(oxdMaterial material READ material WRITE setMaterial)

public:
    using QObject::QObject;

    QVector<quint64> taken; ///< the ids of the objects that were taken last, 0 for null
    QVariant takenVariant;
    QObject *lent = nullptr;

    oxdMaterial material() const { return m_material; }
    void setMaterial(const oxdMaterial &material) { m_material = material; }

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
    }                                                                                                                  \
    QList<Class *> givePointers_##Class() const                                                                        \
    {                                                                                                                  \
        return pointers<Class>();                                                                                      \
    }                                                                                                                  \
    Class *givePointer_##Class(bool null) const                                                                        \
    {                                                                                                                  \
        return null ? nullptr : pointers<Class>().first();                                                             \
    }                                                                                                                  \
    void takePointers_##Class(const QList<Class *> &objects)                                                           \
    {                                                                                                                  \
        taken.clear();                                                                                                 \
        for (const Class *object : objects)                                                                            \
            taken.append(object ? object->objectId() : 0);                                                             \
    }                                                                                                                  \
    void takeValue_##Class(Class object)                                                                               \
    {                                                                                                                  \
        taken = {object.objectId()};                                                                                   \
    }                                                                                                                  \
    void takeConstReference_##Class(const Class &object)                                                               \
    {                                                                                                                  \
        taken = {object.objectId()};                                                                                   \
    }                                                                                                                  \
    void takeReference_##Class(Class &object)                                                                          \
    {                                                                                                                  \
        taken = {object.objectId()};                                                                                   \
    }                                                                                                                  \
    void takePointer_##Class(Class *object)                                                                            \
    {                                                                                                                  \
        taken = {object ? object->objectId() : 0};                                                                     \
    }                                                                                                                  \
    void takeConstPointer_##Class(const Class *object)                                                                 \
    {                                                                                                                  \
        taken = {object ? object->objectId() : 0};                                                                     \
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
    void rebind(oxdMaterial &object) const
    {
        object.initialize(99);
    }
    QString classOf(oxdMaterial *object) const
    {
        return QString::fromUtf8(object->metaObject()->className());
    }
    void takeAny(const oxdMaterial &object)
    {
        takeValue_oxdMaterial(object);
    }
    void takeAny(const QList<oxdMaterial> &objects)
    {
        take(objects);
    }
    void takeAny(const oxdTimer &object)
    {
        taken = {object.objectId() + 1000};
    }

Q_SIGNALS:
    void offered(oxdMaterial *object);
    void offeredCopy(const oxdMaterial &object);

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
    static QList<T *> pointers()
    {
        static QList<T> objects = list<T>();
        return {&objects[0], &objects[1], &objects[2], nullptr};
    }

    template<class T>
    QList<T> take(const QList<T> &objects)
    {
        taken.clear();
        for (const T &object : objects)
            taken.append(object.objectId());
        return objects;
    }

    oxdMaterial m_material;
};
