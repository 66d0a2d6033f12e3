#pragma once
// Marks the classes and functions that libcordel exports; everything else stays hidden.

#define CORDEL_API __attribute__((visibility("default")))
