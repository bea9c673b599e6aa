#pragma once
#define LAPWING_EXPORT
