#pragma once

#include <QMetaType>
#include <QObject>

#include "oxDecouplingDispatcher.h"
#include "oxdCatalogue.h"
#include "oxdStreams.h"
#include "oxkernelservices_export.h"

class QDataStream;

/// The root of all data objects: a handle of one object of the main process.
///
/// A data object is a value. Copying it copies the handle, and both stand for the same object; of
/// the QObject nothing is copied, neither children nor connections nor dynamic properties. As a
/// QObject it is known to scripts by its class, and reached from a QObject pointer by a dynamic_cast:
/// qobject_cast does not work across the virtual base.
///
/// The classes of data objects have no signals, slots or properties, and add no state.
class OXKERNELSERVICES_EXPORT oxdObject : public QObject, public virtual oxDecouplingDispatcher
{
    Q_OBJECT

public:
    /// A handle of no object.
    oxdObject();
    oxdObject(const oxdObject &other);
    oxdObject &operator=(const oxdObject &other);
    ~oxdObject() override;

    /// Binds the handle to the object with that id; 0 is no object. Every level of a class calls
    /// this in its constructor from an id: the levels in between with 0, the class itself, last,
    /// with the id.
    void initialize(unsigned long long id);

    /// The id of the object that this stands for; 0 for none.
    unsigned long long objectId() const { return m_objectId; }

    /// Does nothing: this implementation has no connection for single objects.
    void invokeMethod(const QMetaObject *metaObject, int index, void **arguments) override;

private:
    unsigned long long m_objectId = 0;
};

/// Writes the handle: the object's id as a quint64. All data objects are written alike.
OXKERNELSERVICES_EXPORT QDataStream &operator<<(QDataStream &stream, const oxdObject &object);

/// Reads a handle; 0, no object, where the stream does not hold one.
OXKERNELSERVICES_EXPORT QDataStream &operator>>(QDataStream &stream, oxdObject &object);

OXD_ROOT(OXD_DECLARE_METATYPES)
