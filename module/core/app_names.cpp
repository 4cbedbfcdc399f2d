#include "module/core/app_names.h"

#include "host/base/resbuf.h"
#include "host/database/database.h"

namespace {

constexpr const wchar_t* kNames[] = {
    L"QX_SUPERPART",
    L"QX_SP4BLOCK",
    L"QX_XDATA_SPRING",
    L"QXCAD_FRAME",
    L"GENIUS_GENOLIS_13",
    L"GENIUS_GENOENT_13",
    L"GENIUS_GENODEF_13",
    L"GENIUS_GENOREF_13",
    L"GENIUS_GENOBJ-N-TIT_13",
    L"GENIUS_GENOBJ-N-SDF_13",
    L"GENIUS_GENOBJ-N-ZOO_13",
    L"GENIUS_GENTITLE_13",
    L"GENIUS_GENSCREG_15",
    L"GENIUS_GENSYMENT_13",
    L"GENIUS_GENSCSYM_13",
    L"GENIUS_GENOBJ-N-REV_13",
    L"GENIUS_GENOBJ-N-RSSYM_13",
    L"GENIUS_GENREV_15",
    L"HRA",
    L"HTIT",
    L"GENIUS_GENZOO_17",
    L"GENIUS_GENOBJ-N-CEN_13",
    L"GENIUS_GENCEN_19",
    L"GENIUS_GENOBJ-N-CRS_13",
    L"GENIUS_GENCRS_20",
    L"GENIUS_GENOBJ-N-CRC_13",
    L"GENIUS_GENOBJ-F-INER_13",
    L"GENIUS_GEFINERT_13",
    L"GENIUS_GENOBJ-F-DEFL_13",
    L"GENIUS_GEFDEFL_13",
    L"GENIUS_GEFBIEGE_13",
    L"GENIUS_GENCRC_14",
    L"GENIUS_GENOBJ-N-REC_13",
    L"GENIUS_GENREC_14",
    L"GENIUS_GENFIL_13",
    L"GENIUS_GENOBJ-N-CHA_13",
    L"GENIUS_GENOBJ-N-FIL_13",
    L"GENIUS_GENHATCH_13",
    L"GENIUS_GENOBJ-N-HTC_13",
    L"GENIUS_GENDIM_13",
    L"GENIUS_GENOBJ-N-DIM_13",
    L"GENIUS_GENOBJ-N-DIMLI_13",
    L"GENIUS_GENOBJ-N-FITL_13",
    L"GENIUS_GENFITL_13",
    L"GENIUS_GENDTOL_13",
    L"GENLAYCOLOR",
    L"GENIUS_GENOBJ-NBEHI-BHB_13",
    L"GENIUS_GENOBJ-NBEHI-BHF_13",
    L"GENIUS_GENBH_13",
    L"GENIUS_GENBHRL_14",
};
static_assert(std::size(kNames) == kApplicationCount);

}  // namespace

CString IM_GetAppName(IM_APPLICATION app, unsigned int flags) {
  if (static_cast<unsigned int>(app) - 1u >= static_cast<unsigned int>(kApplicationCount)) return CString();
  const CString name = kNames[app - 1];
  if (flags & kAppNameUnregistered) return name;
  if (resbuf* record = kvdbTblSearch(L"APPID", name, 0)) {
    kvutRelRb(record);
    return name;
  }
  return kvdbRegApp(name) == RTNORM ? name : CString();
}

void IM_SetDbModZero() {
  kvdbSetDbmod(kvdbHostApplicationServices()->workingDatabase(), 0);
}
