// The WAV reader on arbitrary files: see AudioDecoderFuzz.h for what counts as a finding.

#include "AudioDecoderFuzz.h"

#include <Cordel/Audio/Decode/WAV/Decoder.h>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    AudioFuzz::limitAllocations(argc, argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    AudioFuzz::run<Cordel::Audio::Decode::WAV::Decoder>("wav", data, size);
    return 0;
}
