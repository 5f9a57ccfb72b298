#pragma once
#include <tv/apps.h>
