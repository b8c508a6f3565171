#include "cmodel/cfa/src/kit/in_force.h"

namespace cfa {
namespace {

constexpr InForce PROCESS;
thread_local const InForce *current = &PROCESS;

} // namespace

const InForce &in_force() {
    return *current;
}

BoundRegisters::BoundRegisters(const CfaReg &cfa, const CmodelTopReg &top, PlaneTaker *planes)
    : own_{&cfa, &top, planes, false}, before_(current) {
    current = &own_;
}

BoundRegisters::~BoundRegisters() {
    current = before_;
}

} // namespace cfa
