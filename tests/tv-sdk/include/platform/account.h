#pragma once
#include <tv/base.h>
