#include <QImage>

#include <benchmark/benchmark.h>

#include <cstring>

#include "oxFrameReader.h"
#include "oxFrameWriter.h"

// To take a frame of 1280x720 out of the shared memory, beside a copy of its bytes.

namespace {

const QSize frameSize(1280, 720);

/// Frames that cost nothing to render.
class Frames
{
public:
    Frames()
    {
        writer.open(frameSize);
        next();
        next(); // both slots have pixels
        reader.attach(writer.name());
    }

    /// @return the pixels of the new frame, in the shared memory
    const uchar *next()
    {
        uchar *pixels = writer.begin(frameSize);
        pixels[0] = uchar(writer.finish());
        return pixels;
    }

    oxFrameWriter writer;
    oxFrameReader reader;
};

void bare(benchmark::State &state)
{
    Frames frames;
    QImage image(frameSize, QImage::Format_RGB32);
    for (auto _ : state) {
        std::memcpy(image.bits(), frames.next(), size_t(image.sizeInBytes()));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(bare)->Name("frame 1280x720/bare");

void ours(benchmark::State &state)
{
    Frames frames;
    QImage image;
    for (auto _ : state) {
        frames.next();
        if (!frames.reader.read(&image))
            state.SkipWithError("no frame");
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ours)->Name("frame 1280x720/ours");

} // namespace
