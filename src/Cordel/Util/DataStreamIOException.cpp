#include <Cordel/Util/DataStreamIOException.h>

namespace Cordel::Util::Exception {

DataStreamIO::DataStreamIO(String const& message) : Base(message) {}

DataStreamIO::~DataStreamIO() = default;

String DataStreamIO::ToString() const { return Base::ToString() + "\nDataStreamIO\n"; }

} // namespace Cordel::Util::Exception
