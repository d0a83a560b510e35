#include "velmora/bodies/MBS_FlexBody_Full_Commons.h"

#include "velmora/bodies/MBS_FlexBody_Full_Parameter.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

MBS_FlexBody_Full_Commons::MBS_FlexBody_Full_Commons(unsigned index,
                                                     const MBS_FlexBody_Full_Parameter& bodyParameter)
    : MBS_BodyCommons(index),
      Wrf(bodyParameter.Wrf),
      rowsWithOmega(bodyParameter.numOfModes),
      rowsWithAlpha(bodyParameter.numOfModes),
      rowsWithOmegaDot(bodyParameter.numOfModes),
      flexParameter(&bodyParameter) {
    if (bodyParameter.Wtf)
        Wtf.emplace(*bodyParameter.Wtf, *bodyParameter.WtfTransposed);
    if (bodyParameter.WffPairSum)
        Wff.emplace(*bodyParameter.WffPairSum);
}

void MBS_FlexBody_Full_Commons::update(double time, const P* q, const P* qd, const P* qdd) {
    MBS_BodyCommons::update(time, q, qd, qdd);
    const double* eta = q->bodyData(bodyIndex) + 7;
    const double* etaDot = qd->bodyData(bodyIndex) + 7;
    Wrf.update(eta, etaDot);
    Ibar = flexParameter->Itt_tt + Wrf.sumOfCj;
    IbarDot = Wrf.sumOfCjDot;
    Wrf.setRows(omegaBar, rowsWithOmega);
    if (Wff) {
        Wff->update(eta, etaDot);
        Ibar += Wff->sOfEta;
        IbarDot += Wff->sOfEtaDot;
        Wff->addRows(omegaBar, rowsWithOmega);
    }
    IbarGbar = Ibar * Gbar();
    IbarOmegaBar = Ibar * omegaBar;
    IbarDotOmegaBar = IbarDot * omegaBar;
    if (Wtf) {
        Wtf->update(eta, etaDot);
        WtfTimesFlexVelocity = Wtf->TofEta * etaDot;
    }
}

void MBS_FlexBody_Full_Commons::updateForAcceleration(double, const P*, const P* qd, const P* qdd) {
    const Vec4 a = Vec4::from(qdd->bodyData(bodyIndex) + 3);
    alpha = Gbar() * a;
    accelerationMatrix = velmora::Gbar(a);
    Wrf.setRows(alpha, rowsWithAlpha);
    if (Wff) {
        Wff->updateForAcceleration(qd->bodyData(bodyIndex) + 7);
        Wff->addRows(alpha, rowsWithAlpha);
        Wff->setRatesOfRows(omegaBar, rowsWithOmegaDot);
    }
    if (Wtf)
        Wtf->updateForAcceleration(qdd->bodyData(bodyIndex) + 7);
}

} // namespace velmora
