#include "oxFrameReader.h"

#include <cstring>

#include "oxFrameMemory_p.h"

using namespace oxFrameMemory;

oxFrameReader::oxFrameReader() = default;

oxFrameReader::~oxFrameReader() = default;

bool oxFrameReader::attach(const QString &name)
{
    detach();
    m_memory.setNativeKey(name);
    if (!m_memory.attach(QSharedMemory::ReadOnly)) {
        m_error = m_memory.errorString();
        return false;
    }
    const auto *memory = static_cast<const Header *>(m_memory.constData());
    if (slotSize(m_memory) <= 0 || memory->magic != magic || memory->version != version) {
        m_memory.detach();
        m_error = QStringLiteral("'%1' holds no frames").arg(name);
        return false;
    }
    m_error.clear();
    return true;
}

void oxFrameReader::detach()
{
    m_memory.detach();
    m_frame = 0;
}

bool oxFrameReader::isAttached() const
{
    return m_memory.isAttached();
}

QString oxFrameReader::errorString() const
{
    return m_error;
}

bool oxFrameReader::read(QImage *frame)
{
    if (!m_memory.isAttached())
        return false;
    const auto *memory = static_cast<const Header *>(m_memory.constData());
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
    const Slot &slot = static_cast<const Header *>(m_memory.constData())->slots[slotOf(number)];
    if (slot.sequence.load(std::memory_order_acquire) != 2 * number)
        return false;
    const QSize size(slot.width.load(std::memory_order_relaxed), slot.height.load(std::memory_order_relaxed));
    const qint64 bytes = frameSize(size);
    if (bytes < 0 || bytes > slotSize(m_memory))
        return false;

    if (frame->size() != size || frame->format() != QImage::Format_RGB32 || !frame->isDetached())
        *frame = QImage(size, QImage::Format_RGB32);
    if (frame->isNull()) // no memory
        return false;
    const auto offset = static_cast<size_t>(pageSize) + slotOf(number) * static_cast<size_t>(slotSize(m_memory));
    std::memcpy(frame->bits(), static_cast<const uchar *>(m_memory.constData()) + offset, static_cast<size_t>(bytes));

    std::atomic_thread_fence(std::memory_order_acquire); // after the last pixel
    return slot.sequence.load(std::memory_order_relaxed) == 2 * number;
}
