#include "RootChoice.h"

#include "RandomSource.h"
#include "RootNames.h"

namespace tonaro::roots {

QStringList listItems(bool withRandom)
{
    QStringList items;
    if (withRandom)
        items << QStringLiteral("Random");
    for (const char *name : RootNames)
        items << QStringLiteral("Fixed ") + QLatin1String(name);
    return items;
}

int rootOfItem(int item, RandomSource &random)
{
    if (item == 0)
        return RandomSource::pickFrom(random.draw(), 12) + FixedC - 1;
    return item + FixedC - 1;
}

} // namespace tonaro::roots
