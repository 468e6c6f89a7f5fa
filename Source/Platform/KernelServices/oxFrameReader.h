#pragma once

#include <QFile>
#include <QImage>
#include <QString>

#include "oxkernelservices_export.h"

/// Sees the frames that another process of the same user renders: the other end of oxFrameWriter.
///
/// Never waits for the writer, and takes nothing that the memory holds for granted. One thread.
class OXKERNELSERVICES_EXPORT oxFrameReader
{
public:
    oxFrameReader();
    ~oxFrameReader();

    /// Attaches to the memory of that name, in place of an earlier one. To be called again when the
    /// writer was started again.
    ///
    /// @param name what oxRenderService::getSharedMemoryName() says
    /// @return false, and errorString() says why, where there is none, or one that could be cut off
    ///         under the reader
    bool attach(const QString &name);
    void detach();
    bool isAttached() const;
    QString errorString() const;

    /// Copies the newest frame, unless it is the one that was read last.
    ///
    /// @param frame gets the frame, in QImage::Format_RGB32. Give the same one each time and keep no
    ///              copies: the pixels are then written over the old ones, without a new allocation.
    /// @return whether there was a new frame; *frame may be spoilt where there was one that the
    ///         writer replaced while it was read
    bool read(QImage *frame);

private:
    Q_DISABLE_COPY(oxFrameReader)

    bool readFrame(quint64 number, QImage *frame) const;

    QFile m_file;
    uchar *m_memory = nullptr; // all of the file
    qint64 m_slotSize = 0;
    QString m_error;
    quint64 m_frame = 0; // the one that was read last
};
