// The numbered messages, so that these tests need no installed resources.
#include "siblings/resources/mekres.h"

CString IM_GetStringFromRc(unsigned int id, int maximumLength) {
  return id == 1148 ? CString(L"%d gaps").Left(maximumLength - 1) : CString();
}
