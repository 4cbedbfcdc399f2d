#pragma once
// A drawing's current dimension variables as one set: those of its header, which new dimensions take.
#include "host/database/database.h"
#include "host/entities/dimvars.h"

/// What the header says; a variable that it lacks has the value of the current style.
/// Styles, blocks and linetypes that it names and the drawing lacks count as not given.
KvDbDimVars kvdbCurrentDimVars(const KvDbDatabase& drawing);
/// Makes the header say this set. Variables that headers don't hold stay out.
void kvdbSetCurrentDimVars(KvDbDatabase& drawing, const KvDbDimVars& variables);
/// True when the current set says something else than the record of the current style. Numbers that agree in
/// their first nine digits are equal, since files round them; the text style "Standard" and none are the
/// same.
bool kvdbIsDimStyleOverridden(const KvDbDatabase& drawing);
