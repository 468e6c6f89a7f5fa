#pragma once

#include <QSharedMemory>
#include <QSize>
#include <QString>

#include <memory>

#include "oxkernelservices_export.h"

/// Hands rendered frames to other processes of the same user: the main process's end of a memory
/// that both share. oxFrameReader is the other end.
///
/// Frames are written in place and never wait for a reader, however slow, stopped or dead that is.
/// One writer for each name; one thread.
class OXKERNELSERVICES_EXPORT oxFrameWriter
{
public:
    oxFrameWriter();
    /// Gives the memory back; readers that are attached keep it, with its last frame.
    ~oxFrameWriter();

    /// Makes the memory, or takes over the one that an earlier process left under that name: readers
    /// that are still attached to it see the new frames.
    ///
    /// @param name    path of a file that names the memory. It is made, and goes with the last
    ///                process that uses the memory. Others must not be able to write to its folder.
    /// @param largest frames up to as many pixels fit in
    /// @return false, and errorString() says why, where there is no such folder, not enough memory,
    ///         or the name belongs to a memory of another size that is in use
    bool open(const QString &name, const QSize &largest);
    QString errorString() const;

    /// What oxFrameReader::attach() takes; empty before open().
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

    std::unique_ptr<QSharedMemory> createOrTakeOver(const QString &name, int size);

    std::unique_ptr<QSharedMemory> m_memory;
    QString m_error;
    quint64 m_frame = 0; // the newest complete one
};
