#pragma once
// Everything Cordel offers, in one include.

#include <Cordel/common/Char.h>
#include <Cordel/common/Export.h>
#include <Cordel/common/SharedPtr.h>
#include <Cordel/common/String.h>
#include <Cordel/common/Types.h>
#include <Cordel/common/Version.h>
#include <Cordel/IPP/Arithmetic.h>
#include <Cordel/IPP/Complex.h>
#include <Cordel/IPP/Convert.h>
#include <Cordel/IPP/Generate.h>
#include <Cordel/IPP/Image.h>
#include <Cordel/IPP/InstructionSet.h>
#include <Cordel/IPP/Interleave.h>
#include <Cordel/IPP/Memory.h>
#include <Cordel/IPP/Polar.h>
#include <Cordel/IPP/Statistics.h>
#include <Cordel/IPP/Threshold.h>
#include <Cordel/IPP/Window.h>
#include <Cordel/Util/CommandLine.h>
#include <Cordel/Util/Complex.h>
#include <Cordel/Util/Exception.h>
#include <Cordel/Util/Math.h>
#include <Cordel/Util/Random.h>
