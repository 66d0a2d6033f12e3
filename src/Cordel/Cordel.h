#pragma once
// Everything Cordel offers, in one include. Every installed header is listed here, by area; a
// test fails when one is missing.

// Core types: text, paths and the small value types.
#include <Cordel/common/Char.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>
#include <Cordel/common/SharedPtr.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>
#include <Cordel/common/Version.h>

// Exceptions, streams, Base64 and CRC-16.
#include <Cordel/Util/Base64.h>
#include <Cordel/Util/ByteStream.h>
#include <Cordel/Util/CRC16.h>
#include <Cordel/Util/DataStream.h>
#include <Cordel/Util/DataStreamIOException.h>
#include <Cordel/Util/Exception.h>

// Files and folders.
#include <Cordel/Util/Dir.h>
#include <Cordel/Util/File.h>
#include <Cordel/Util/FileIOException.h>
#include <Cordel/Util/FileStream.h>
#include <Cordel/Util/SystemFolders.h>

// Threads and synchronisation.
#include <Cordel/Util/Atomic.h>
#include <Cordel/Util/CommandPipe.h>
#include <Cordel/Util/CriticalSection.h>
#include <Cordel/Util/DataQueue.h>
#include <Cordel/Util/LockFreeFIFO.h>
#include <Cordel/Util/Thread.h>

// Audio files.
#include <Cordel/Audio/WaveFormat.h>
#include <Cordel/Audio/Decode/BadFormat.h>
#include <Cordel/Audio/Decode/Stream.h>
#include <Cordel/Audio/Decode/Open.h>
#include <Cordel/Audio/Decode/PCMDecoder.h>
#include <Cordel/Audio/Decode/WAV/Decoder.h>
#include <Cordel/Audio/Decode/AIFF/Decoder.h>
#include <Cordel/Audio/Encode/EncodeError.h>
#include <Cordel/Audio/Encode/Stream.h>
#include <Cordel/Audio/Encode/PCMEncoder.h>
#include <Cordel/Audio/Encode/WAV/Encoder.h>
#include <Cordel/Audio/Encode/AIFF/Encoder.h>

// Signal processing.
#include <Cordel/IPP/Arithmetic.h>
#include <Cordel/IPP/Complex.h>
#include <Cordel/IPP/ComplexMath.h>
#include <Cordel/IPP/Convert.h>
#include <Cordel/IPP/FFT.h>
#include <Cordel/IPP/FIR.h>
#include <Cordel/IPP/Generate.h>
#include <Cordel/IPP/IIR.h>
#include <Cordel/IPP/Image.h>
#include <Cordel/IPP/InstructionSet.h>
#include <Cordel/IPP/Interleave.h>
#include <Cordel/IPP/Math.h>
#include <Cordel/IPP/MDCT.h>
#include <Cordel/IPP/Memory.h>
#include <Cordel/IPP/Multirate.h>
#include <Cordel/IPP/Polar.h>
#include <Cordel/IPP/Random.h>
#include <Cordel/IPP/Statistics.h>
#include <Cordel/IPP/Threshold.h>
#include <Cordel/IPP/Window.h>

// Objects, signals and slots.
#include <Cordel/Util/MetaObject.h>
#include <Cordel/Util/Object.h>
#include <Cordel/Util/ObjectInvoke.h>
#include <Cordel/Util/SignalProxy.h>
#include <Cordel/Util/Signals.h>

// MIDI files.
#include <Cordel/MIDI/MIDIMessage.h>
#include <Cordel/MIDI/Decode/Decoder.h>
#include <Cordel/MIDI/Encode/Encoder.h>

// Platform services.
#include <Cordel/Util/Clipboard.h>
#include <Cordel/Util/ConfigFile.h>
#include <Cordel/Util/LaunchURL.h>
#include <Cordel/Util/Module.h>
#include <Cordel/Util/Time.h>
#include <Cordel/Util/TinyXML.h>

// Network.
#include <Cordel/Network/BadURLEncoding.h>
#include <Cordel/Network/Http.h>
#include <Cordel/Network/HttpError.h>
#include <Cordel/Network/URLEncode.h>

// Developer tools.
#include <Cordel/Util/CommandLine.h>
