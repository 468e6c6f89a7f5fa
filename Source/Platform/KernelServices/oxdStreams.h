#pragma once

#include <QtGlobal>

#include "oxdCatalogue.h"
#include "oxkernelservices_export.h"

/// Reading lists and vectors of data objects from a data stream.
///
/// Both begin with the number of elements, a quint32; the elements follow, each as its oxdObject.
/// That is what Qt writes, so there are only readers here. They discard what the container held
/// before, and report nothing: errors show in the stream's status alone, and an earlier error does
/// not keep them from reading. They are not templates, because that makes them win over Qt's own
/// readers wherever a container of a data-object class is read: in `stream >> list`, in a QVariant
/// and in QMetaType::load(). Qt's readers give up at a bad status and clear the container.
///
/// A list ends with the stream: announced 3 and holding 2, it has 2 elements. The test for the end
/// follows each element, so that a list that is announced and not there has one, without object.
///
/// A vector has always the announced size: elements that the stream no longer held are without
/// object. A count that no QVector holds, or memory doesn't, gives an empty vector and the status
/// QDataStream::ReadCorruptData.

class QDataStream;
QT_BEGIN_NAMESPACE
template<class T>
class QList;
template<class T>
class QVector;
QT_END_NAMESPACE

#define OXD_DECLARE_STREAM_READERS(Class, Levels, Container, Python)                                                   \
    class Class;                                                                                                       \
    OXKERNELSERVICES_EXPORT QDataStream &operator>>(QDataStream &stream, QList<Class> &list);                          \
    OXKERNELSERVICES_EXPORT QDataStream &operator>>(QDataStream &stream, QVector<Class> &vector);
OXD_CLASSES(OXD_DECLARE_STREAM_READERS)
#undef OXD_DECLARE_STREAM_READERS
