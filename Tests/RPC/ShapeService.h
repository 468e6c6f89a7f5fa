#pragma once

#include <QDataStream>
#include <QMetaType>

#include "oxBaseService.h"

/// A type of a host's own, which a process has to register.
struct Shape
{
    int sides = 0;
};
Q_DECLARE_METATYPE(Shape)

inline QDataStream &operator<<(QDataStream &stream, const Shape &shape)
{
    return stream << shape.sides;
}

inline QDataStream &operator>>(QDataStream &stream, Shape &shape)
{
    return stream >> shape.sides;
}

/// An interface that works with that type.
class ShapeService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "ShapeService")

public:
    using oxBaseService::oxBaseService;

public Q_SLOTS:
    virtual int sides(const Shape &shape) { return call<int>(staticMetaObject, "sides(Shape)", shape); }
    virtual Shape polygon(int sides) { return call<Shape>(staticMetaObject, "polygon(int)", sides); }
    /// Signals drawn().
    virtual void draw(int sides) { call(staticMetaObject, "draw(int)", sides); }

Q_SIGNALS:
    void drawn(const Shape &shape);
};

/// The same type as a property's.
class ShapeHolder : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "ShapeHolder")
    Q_PROPERTY(Shape shape READ shape NOTIFY shapeChanged)

public:
    using oxBaseService::oxBaseService;

    Shape shape() const { return {4}; }

Q_SIGNALS:
    void shapeChanged(const Shape &shape);
};
