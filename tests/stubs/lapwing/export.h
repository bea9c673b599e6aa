#pragma once
#ifndef LAPWING_EXPORT
#define LAPWING_EXPORT
#endif
