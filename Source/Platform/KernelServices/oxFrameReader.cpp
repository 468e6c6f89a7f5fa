#include "oxFrameReader.h"

#include <QFileInfo>

#include <cstring>
#include <fcntl.h>

#include "oxFrameMemory_p.h"

using namespace oxFrameMemory;

namespace {

bool canShrink(const QFile &file)
{
    const int seals = fcntl(file.handle(), F_GET_SEALS);
    return seals < 0 || !(seals & F_SEAL_SHRINK);
}

bool holdsFrames(const uchar *memory)
{
    const auto *header = reinterpret_cast<const Header *>(memory);
    return header->magic == magic && header->version == version;
}

} // namespace

oxFrameReader::oxFrameReader() = default;

oxFrameReader::~oxFrameReader() = default;

bool oxFrameReader::attach(const QString &name)
{
    detach();
    m_file.setFileName(name);
    const bool isFile = QFileInfo(name).isFile(); // a pipe would wait for its writer
    if (isFile && m_file.open(QIODevice::ReadOnly) && !canShrink(m_file) && slotSize(m_file.size()) > 0)
        m_memory = m_file.map(0, m_file.size());
    if (!m_memory || !holdsFrames(m_memory)) {
        detach();
        m_error = QStringLiteral("'%1' holds no frames").arg(name);
        return false;
    }
    m_slotSize = slotSize(m_file.size());
    m_error.clear();
    return true;
}

void oxFrameReader::detach()
{
    m_file.unmap(m_memory); // close() does not
    m_file.close();
    m_memory = nullptr;
    m_frame = 0;
}

bool oxFrameReader::isAttached() const
{
    return m_memory;
}

QString oxFrameReader::errorString() const
{
    return m_error;
}

bool oxFrameReader::read(QImage *frame)
{
    if (!m_memory)
        return false;
    const auto *memory = reinterpret_cast<const Header *>(m_memory);
    // A writer that is quicker than this copies gets a second chance, but not for ever.
    for (int i = 0; i < 3; ++i) {
        const quint64 newest = memory->newest.load(std::memory_order_acquire);
        if (newest == m_frame)
            return false;
        if (readFrame(newest, frame)) {
            m_frame = newest;
            return true;
        }
    }
    return false;
}

bool oxFrameReader::readFrame(quint64 number, QImage *frame) const
{
    const Slot &slot = reinterpret_cast<const Header *>(m_memory)->slots[slotOf(number)];
    if (slot.sequence.load(std::memory_order_acquire) != 2 * number)
        return false;
    const QSize size(slot.width.load(std::memory_order_relaxed), slot.height.load(std::memory_order_relaxed));
    const qint64 bytes = frameSize(size);
    if (bytes < 0 || bytes > m_slotSize)
        return false;

    if (frame->size() != size || frame->format() != QImage::Format_RGB32 || !frame->isDetached())
        *frame = QImage(size, QImage::Format_RGB32);
    if (frame->isNull()) // no memory
        return false;
    const uchar *pixels = m_memory + pageSize + static_cast<qint64>(slotOf(number)) * m_slotSize;
    std::memcpy(frame->bits(), pixels, static_cast<size_t>(bytes));

    std::atomic_thread_fence(std::memory_order_acquire); // after the last pixel
    return slot.sequence.load(std::memory_order_relaxed) == 2 * number;
}
