// The reference: the pipeline over whole planes, read top to bottom.
#include "cmodel/cfa/src/cfa_model.h"

#include "cmodel/cfa/src/kit/register_groups.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"

namespace cfa {

namespace {

// Frees planes that nobody reads any more: a picture of 12 megapixels would hold 2.5 GB of them at the end.
template <class... Planes> void give_back(Planes &...planes) {
    (planes.reset(), ...);
}

} // namespace

void cfa_model(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg) {
    const uint32_t b = pattern_id();
    const uint32_t source = raw->type;
    const auto one = [raw](uint32_t bits, uint32_t type) { return plane_like(raw, type, 1, bits); };
    const auto three = [raw](uint32_t bits, uint32_t type) { return plane_like(raw, type, 3, bits); };

    FramePtr AvgRGB = three(raw->bit_depth, source);
    cfa_CalAvg(raw, AvgRGB.get(), b);

    FramePtr GH = three(12, source), GV = three(12, source);
    FramePtr GH_lp = one(12, source), GH_hp = one(12, source);
    FramePtr GV_lp = one(12, source), GV_hp = one(12, source);
    FramePtr MaxRGB = three(12, source), MinRGB = three(12, source);
    cfa_CalPredictPixel(raw, GH.get(), GV.get(), GH_lp.get(), GH_hp.get(), GV_lp.get(), GV_hp.get(),
                        MaxRGB.get(), MinRGB.get(), b);

    FramePtr LV = one(16, source), LH = one(16, source);
    FramePtr RatioV = one(16, source), RatioH = one(16, source), LMax = one(16, source);
    cfa_CalClassifier(raw, LH.get(), LV.get(), LMax.get(), RatioH.get(), RatioV.get(), b);

    FramePtr SigH = one(24, source), SigV = one(24, source);
    {
        FramePtr Diff0H = one(16, source), Diff0V = one(16, source);
        FramePtr Diff3H = one(16, source), Diff3V = one(16, source);
        cfa_CalVarOfColorDiffAtG(raw, GH.get(), GV.get(), SigH.get(), SigV.get(), b);
        cfa_CalVarOfColorDiffAtRB(raw, GH.get(), GV.get(), Diff0H.get(), Diff0V.get(), Diff3H.get(),
                                  Diff3V.get(), SigH.get(), SigV.get(), b);
    }

    FramePtr DirInfo = one(8, source); // new planes are 0
    cfa_CalDirectionInfo(raw, AvgRGB.get(), LH.get(), LV.get(), SigH.get(), SigV.get(), DirInfo.get(), b);
    give_back(LH, LV);

    FramePtr cfa_RGB = three(12, FRAME_TYPE_IMG);
    cfa_CalRGB(raw, cfa_RGB.get(), GH.get(), GV.get(), GH_lp.get(), GV_lp.get(), GH_hp.get(), GV_hp.get(),
               MaxRGB.get(), MinRGB.get(), SigH.get(), SigV.get(), LMax.get(), RatioH.get(), RatioV.get(),
               DirInfo.get(), b);
    give_back(GH_lp, GH_hp, GV_lp, GV_hp, LMax, RatioH, RatioV, SigH, SigV, DirInfo);

    FramePtr YMoire = three(12, FRAME_TYPE_IMG);
    cfa_DeYMoire(cfa_RGB.get(), AvgRGB.get(), MaxRGB.get(), MinRGB.get(), GH.get(), GV.get(), YMoire.get());
    give_plane("YMoire", YMoire.get());
    give_back(cfa_RGB, MinRGB);

    FramePtr cdist_wt = one(16, FRAME_TYPE_IMG), edge_wt = one(16, FRAME_TYPE_IMG);
    cfa_CalColorMoireSts(AvgRGB.get(), GH.get(), GV.get(), cdist_wt.get(), edge_wt.get());
    give_back(AvgRGB);

    FramePtr pd_wt = one(12, source);
    cfa_CalPhaseDifference(raw, GH.get(), GV.get(), pd_wt.get());
    give_back(GH, GV);

    FramePtr CMOut = three(12, source);
    cfa_DeColorMoire(YMoire.get(), CMOut.get(), pd_wt.get(), cdist_wt.get(), edge_wt.get());
    give_plane("CMOut", CMOut.get());
    give_back(YMoire, pd_wt, cdist_wt, edge_wt);
    copy_to_dst(CMOut.get(), out_rgb);
    give_back(CMOut);

    FramePtr MaxRGB1 = one(12, FRAME_TYPE_IMG);
    gen_MaxRGB_1ch(MaxRGB.get(), MaxRGB1.get());
    give_plane("MaxRGB1", MaxRGB1.get());
    give_back(MaxRGB);
    gen_dst_dc(MaxRGB1.get(), out_dc);
    give_plane("out_dc", out_dc);
    give_back(MaxRGB1);

    sharpen_gain_main_proc(raw, out_rgb, out_sg);
    give_plane("out_sg", out_sg);
    give_plane("out_rgb", out_rgb);
}

} // namespace cfa
