// What is done when the library is loaded and left; a program that holds the engine itself calls the two.
#pragma once

#include "platform/platform.h" // declares library_attach and library_detach, which base/attach.cpp supplies
