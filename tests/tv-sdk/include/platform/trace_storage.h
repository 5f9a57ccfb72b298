#pragma once
#include <tv/trace.h>
