// What a run reads beside its arguments: the registers in force.
#pragma once

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"

namespace cfa {

class PlaneTaker;

/// The registers that the functions of the block read: the process-wide blocks, unless the thread has bound
/// others.
struct InForce {
    const CfaReg *cfa = &cfa_reg;
    const CmodelTopReg *top = &cmodel_top_reg;
    PlaneTaker *planes = nullptr; // gets the planes, if not null
    bool is_process = true;       // the process's own run, which logs and writes debug images
};

const InForce &in_force();

/// The registers of the CFA block in force.
inline const CfaRegHw &registers() {
    return in_force().cfa->hw;
}

/// Binds a block's own registers for this thread as long as the object lives: nothing process-wide is read
/// then, nothing logged, no debug image written. Planes go to `planes`, which may be null.
class BoundRegisters {
  public:
    BoundRegisters(const CfaReg &cfa, const CmodelTopReg &top, PlaneTaker *planes);
    ~BoundRegisters();
    BoundRegisters(const BoundRegisters &) = delete;
    BoundRegisters &operator=(const BoundRegisters &) = delete;

  private:
    const InForce own_;
    const InForce *const before_;
};

} // namespace cfa
