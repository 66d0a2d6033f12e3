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
#include <Cordel/Util/Atomic.h>
#include <Cordel/Util/ByteStream.h>
#include <Cordel/Util/CommandLine.h>
#include <Cordel/Util/CommandPipe.h>
#include <Cordel/Util/CriticalSection.h>
#include <Cordel/Util/DataQueue.h>
#include <Cordel/Util/DataStream.h>
#include <Cordel/Util/DataStreamIOException.h>
#include <Cordel/Util/Exception.h>
#include <Cordel/Util/FileIOException.h>
#include <Cordel/Util/LockFreeFIFO.h>
#include <Cordel/Util/Thread.h>
#include <Cordel/Util/Time.h>
