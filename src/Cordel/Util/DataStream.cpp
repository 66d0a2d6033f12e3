#include <Cordel/Util/DataStream.h>

namespace Cordel::Util {

DataStream::~DataStream() = default;

} // namespace Cordel::Util
