#pragma once
// Everything Cordel offers, in one include.

#include <Cordel/common/Char.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>
#include <Cordel/common/SharedPtr.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>
#include <Cordel/common/Version.h>
#include <Cordel/IPP/Complex.h>
#include <Cordel/IPP/Memory.h>
#include <Cordel/MIDI/Decode/Decoder.h>
#include <Cordel/MIDI/Encode/Encoder.h>
#include <Cordel/MIDI/MIDIMessage.h>
#include <Cordel/Util/Base64.h>
#include <Cordel/Util/ByteStream.h>
#include <Cordel/Util/CRC16.h>
#include <Cordel/Util/CommandLine.h>
#include <Cordel/Util/DataStream.h>
#include <Cordel/Util/DataStreamIOException.h>
#include <Cordel/Util/Dir.h>
#include <Cordel/Util/Exception.h>
#include <Cordel/Util/File.h>
#include <Cordel/Util/FileIOException.h>
#include <Cordel/Util/FileStream.h>
#include <Cordel/Util/SystemFolders.h>
