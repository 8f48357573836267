#pragma once

/// \file
/// Stand-in for the system header of that name: what the reading of accelerator statistics uses of it. Types
/// are as strict as the system's own; the test that includes it defines the functions.

struct StandInAllocator;
struct StandInDictionary;
struct StandInNumber;
struct StandInString;

using Boolean = unsigned char;
using CFTypeRef = void const*;
using CFAllocatorRef = StandInAllocator const*;
using CFDictionaryRef = StandInDictionary const*;
using CFMutableDictionaryRef = StandInDictionary*;
using CFNumberRef = StandInNumber const*;
using CFStringRef = StandInString const*;
using CFNumberType = long;

constexpr CFNumberType kCFNumberSInt64Type = 4;

extern CFAllocatorRef const kCFAllocatorDefault;

extern "C" {
CFStringRef standInConstantString(char const* text);
void const* CFDictionaryGetValue(CFDictionaryRef dictionary, void const* key);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);
void CFRelease(CFTypeRef object);
}

#define CFSTR(text) standInConstantString(text)
