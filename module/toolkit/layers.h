#pragma once
// The standard's layers: every drawn line is of a kind, and the kind decides its layer. Names, colours,
// linetypes and line weights belong to the symbol module; here stand the kinds and the ways to them.
#include <vector>

#include "host/database/entity.h"
#include "module/core/export.h"

/// The kind of a drawn line; 0 is none. A stored contract.
using ImProPropertyConfig = int;

/// The kind of a short sub-layer key ("CON1"), without regard to case; 0 for an unknown one.
MEK_API ImProPropertyConfig IM_GetPropertyConfigFromSubLayer(CString subLayer);
namespace mek {
/// The kinds that sub-layer keys name, each once, in ascending order.
MEK_API std::vector<ImProPropertyConfig> subLayerKinds();
}  // namespace mek
/// The layer's name for a key of the drawing code ("THICK", "HATCH"), without regard to case; `defaultName`
/// for an unknown one.
MEK_API CString GetSysLayer(CString key, CString defaultName, bool flag);
/// The kind of an index in older data; 0 outside -1 to 15.
MEK_API ImProPropertyConfig IM_IntToImLayer(int index, int flag);
/// The same for layers of standard parts: its twin, where it has one.
MEK_API ImProPropertyConfig IM_IntToStdPartLayer(int index, int flag);

/// The layer's name by the standard in force; "0" when the symbol module can't tell.
MEK_API CString IM_GetLayerName(ImProPropertyConfig config, int flag);
/// The kind's layer in a drawing (null: the working one), made when missing; null when the symbol module
/// can't.
MEK_API KvDbObjectId IM_GetLayerId(ImProPropertyConfig config, KvDbDatabase* database, int flag);
/// A layer by name; null when there is none.
MEK_API KvDbObjectId IM_GetLayerId(CString name, KvDbDatabase* database);
/// Layer, colour and linetype of an entity by the kind. False when the symbol module can't.
MEK_API bool IM_SetPropertyFromConfig(KvDbEntity* entity, ImProPropertyConfig config);

/// 1 when the layer is one of the centre lines' (kinds 49 to 52) and that is what is asked (kind 49). 0 for
/// every other kind: no other family is told apart.
MEK_API int IM_IsLayerKindOf(CString layerName, ImProPropertyConfig kind);
MEK_API int IM_IsLayerKindOf(KvDbObjectId layerId, ImProPropertyConfig kind);

/// By layer when the record can't be opened.
MEK_API KvCmEntityColor IM_GetLayerColor(KvDbObjectId layerId);
/// Null when the record can't be opened.
MEK_API KvDbObjectId IM_GetLayerLineType(KvDbObjectId layerId);
/// The layer "0" (null: of the working drawing); null on failure.
MEK_API KvDbObjectId IM_GetLayerZeroId(KvDbDatabase* database);

/// Brings a drawing that is to be inserted under the present names: layers with names of earlier editions are
/// renamed, or merged into the layer that has the name already. Only model space is walked, so that a layer
/// that blocks or layouts still use can't go: 0, as for a null drawing. `used` gets the kinds that were met.
/// 1 otherwise.
MEK_API int IM_DwgInsertLayerConvert(KvDbDatabase* database, std::vector<ImProPropertyConfig>& used);
