#include <lapwing/kit/report.h>
