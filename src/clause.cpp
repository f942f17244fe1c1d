// Stand-in until path conditions land.
#include "clause.h"
