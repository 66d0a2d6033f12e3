#include <Cordel/Audio/WaveFormat.h>

namespace Cordel::Audio {

WaveFormat const WAVEFORMAT_MONO_16_44KHZ{1, 2, 44100, false, 0};
WaveFormat const WAVEFORMAT_STEREO_16_44KHZ{2, 2, 44100, false, 0};
WaveFormat const WAVEFORMAT_CD_QUALITY{2, 2, 44100, false, 0};

} // namespace Cordel::Audio
