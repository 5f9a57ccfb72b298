#pragma once
#include <tv/media.h>
