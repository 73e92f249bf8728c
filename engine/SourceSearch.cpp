#include "SourceSearch.h"

#include <cstring>

namespace Velmor {

const char* sourceSearchName(SourceSearch search)
{
    return search == SourceSearch::Structured ? "Structured" : "Random";
}

bool sourceSearchFromName(const char* name, SourceSearch& search)
{
    if (!name)
        return false;
    if (std::strcmp(name, "Random") == 0)
        search = SourceSearch::Random;
    else if (std::strcmp(name, "Structured") == 0)
        search = SourceSearch::Structured;
    else
        return false;
    return true;
}

} // namespace Velmor
