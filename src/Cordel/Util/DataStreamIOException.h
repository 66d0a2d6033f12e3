#pragma once
// Thrown when a value cannot be extracted from or inserted into a data stream.

#include <Cordel/Util/Exception.h>
#include <Cordel/common/Export.h>

namespace Cordel::Util::Exception {

class CORDEL_API DataStreamIO : public Cordel::Exception::Base {
public:
    explicit DataStreamIO(String const& message);
    ~DataStreamIO() override;
    // The base text followed by "\nDataStreamIO\n".
    String ToString() const override;
};

} // namespace Cordel::Util::Exception
