#pragma once
// Everything Cordel offers, in one include.

#include <Cordel/common/Char.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/SharedPtr.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>
#include <Cordel/common/Version.h>
#include <Cordel/IPP/Complex.h>
#include <Cordel/IPP/FFT.h>
#include <Cordel/IPP/FIR.h>
#include <Cordel/IPP/IIR.h>
#include <Cordel/IPP/MDCT.h>
#include <Cordel/IPP/Memory.h>
#include <Cordel/IPP/Multirate.h>
#include <Cordel/Util/CommandLine.h>
#include <Cordel/Util/Exception.h>
