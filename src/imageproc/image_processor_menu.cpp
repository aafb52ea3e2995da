#include "imageproc/image_processor_menu.h"

namespace keldo::imageproc {
namespace {

constexpr MenuRow kMenuBar[] = {
    {0, "mnuFile", "&File"},
    {1, "mnuNew1Dim", "New &1 Dim"},
    {1, "mnuNew2Dim", "New &2 Dim"},
    {1, "mnuNewAudioEditor", "New &Audio editor"},
    {1, "mnuNewImageEditor", "New Image processor"},
    {1, "mnuGetImage", "&Get Image"},
    {1, "mnuSaveReconstructedImage", "&Save Reconstructed Image"},
    {1, "mnuClose", "&Close"},
    {0, "mnuEdit", "&Edit"},
    {1, "mnuCopyRightImage", "&Copy right image"},
    {1, "mnuCopyLeftImage", "Copy left image"},
    {0, "mnuWindow", "&Window"},
    {1, "mnuCascade", "&Cascade"},
    {1, "mnuTile", "&Tile"},
    {1, "mnuArrange", "&Arrange"},
    {0, "mnuCommands", "&Process"},
    {1, "mnuTransformImage", "&Transform "},
    {1, "mnuCompress", "&Compress"},
    {1, "mnuDecompress", "&Decompress"},
    {1, "mnuDenoise", "De&noise"},
    {2, "mnuDenoiseTAWS", "&TAWS"},
    {2, "mnuDenoiseSureShrink", "&SureShrink"},
    {2, "mnuMedianDenoise", "Median"},
    {2, "mnuAdaptiveMedianDenoise", "Adaptive median"},
    {1, "mnuErrormeasures", "&Error measures"},
    {0, "mnuHelp", "&Help"},
};

}  // namespace

std::span<const MenuRow> ImageProcessorMenuBar() { return kMenuBar; }

}  // namespace keldo::imageproc
