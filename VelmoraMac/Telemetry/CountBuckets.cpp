#include "CountBuckets.h"

using namespace Qt::StringLiterals;

QString cleanedCountBucket(qint64 count)
{
    if (count <= 0)
        return u"0"_s;
    if (count <= 5)
        return u"1-5"_s;
    if (count <= 25)
        return u"6-25"_s;
    if (count <= 100)
        return u"26-100"_s;
    return u"100+"_s;
}

QString removedParameterCountBucket(qint64 count)
{
    if (count <= 0)
        return u"0"_s;
    if (count <= 2)
        return u"1-2"_s;
    if (count <= 5)
        return u"3-5"_s;
    if (count <= 10)
        return u"6-10"_s;
    return u"10+"_s;
}
