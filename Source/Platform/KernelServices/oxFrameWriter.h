#pragma once

#include <QFile>
#include <QSize>
#include <QString>

#include "oxkernelservices_export.h"

/// Hands rendered frames to other processes of the same user: the main process's end of a memory
/// that both share. oxFrameReader is the other end.
///
/// Frames are written in place and never wait for a reader, however slow, stopped or dead that is.
/// One thread.
class OXKERNELSERVICES_EXPORT oxFrameWriter
{
public:
    oxFrameWriter();
    /// Readers that are attached keep the memory, with its last frame.
    ~oxFrameWriter();

    /// Makes the memory, in place of an earlier one. It goes with the last process that uses it,
    /// however that ends.
    ///
    /// @param largest frames up to as many pixels fit in
    /// @return false, and errorString() says why, where the system gives no such memory
    bool open(const QSize &largest);
    QString errorString() const;

    /// What oxFrameReader::attach() takes, another one for each writer; empty before open().
    QString name() const;

    /// Whether a frame of that size fits in.
    bool hasRoomFor(const QSize &size) const;

    /// Begins a frame.
    /// @return where its pixels are to be written, row by row from the top, each as in
    ///         QImage::Format_RGB32; null where there is no room for it. Valid until finish().
    uchar *begin(const QSize &size);
    /// Ends the frame that was begun, which readers can see from now on.
    /// @return its number, from 1
    quint64 finish();

private:
    Q_DISABLE_COPY(oxFrameWriter)

    QString create(const QSize &largest);

    QFile m_file;
    uchar *m_memory = nullptr; // all of the file
    qint64 m_slotSize = 0;
    QString m_error;
    quint64 m_frame = 0; // the newest complete one
};
