#include "autofocusclimb.h"

#include <cstdlib>

namespace {

// Falls smaller than these are taken for the noise of the picture, not for a fall.
constexpr double kFastFall = 1.6;
constexpr double kSlowFall = 0.8;
// Near the peak a last rise this close to the best is as good, and lies nearer the peak's middle.
constexpr double kRiseNearBest = 0.4;
constexpr int kSlowReversalLimit = 2;

}  // namespace

void AutoFocusClimb::reset() {
    stage_ = 0;
    dropCounter_ = 0;
    reversalCounter_ = 0;
    backMoveCounter_ = 0;
    direction_ = 1;
    moveCounter_ = 0;
    position_ = 0;
    peakFound_ = false;
    lastBackMove_ = 0;
    speedStatus_ = 0;
    lastValue_ = 0.0;
    bestValue_ = 0.0;
    limitReached_ = false;
}

int AutoFocusClimb::adjust(double value) {
    return stage_ == 0 ? adjustFast(value) : adjustSlow(value);
}

int AutoFocusClimb::adjustFast(double value) {
    speedStatus_ = 0;
    if (value > fastThreshold_) {
        dropCounter_ = reversalCounter_ = backMoveCounter_ = position_ = 0;
        lastValue_ = bestValue_ = 0.0;
        stage_ = 1;
        return 0;
    }
    if (value + kFastFall > lastValue_) {
        if (value > lastValue_) {
            lastValue_ = value;
        }
        dropCounter_ = 0;
        return continueFast();
    }
    if (dropCounter_ < fastDropLimit_ - 1) {
        ++dropCounter_;
        return continueFast();
    }
    ++reversalCounter_;
    dropCounter_ = 0;
    lastValue_ = 0.0;
    if (reversalCounter_ > fastReversalLimit_) {
        reversalCounter_ = position_ = 0;
        stage_ = 1;
        return 0;
    }
    return startMove(-1, stepFactor_ * (fastDropLimit_ - 1), fastStep_);
}

int AutoFocusClimb::continueFast() {
    const int limit = backMoveCounter_ <= 1 ? travelLimitBeforeReturn_ : travelLimitAfterReturn_;
    return travelUsedUp(limit) ? moveToBack() : startMove(1, stepFactor_, fastStep_);
}

int AutoFocusClimb::adjustSlow(double value) {
    speedStatus_ = 1;
    if (value + kSlowFall >= lastValue_) {
        dropCounter_ = 0;
        if (value > lastValue_) {
            lastValue_ = value;
            lastRisePosition_ = position_;
            if (value > bestValue_) {
                bestValue_ = value;
                bestPosition_ = position_;
            }
        }
        return continueSlow();
    }
    if (dropCounter_ < slowDropLimit_ - 1) {
        ++dropCounter_;
        return continueSlow();
    }
    if (reversalCounter_ >= 1 && direction_ == -1) {
        peakFound_ = true;
        backMoveCounter_ = 0;
        const int target =
            lastValue_ + kRiseNearBest > bestValue_ ? lastRisePosition_ : bestPosition_;
        return target - position_;
    }
    ++reversalCounter_;
    dropCounter_ = 0;
    lastValue_ = 0.0;
    return startMove(-1, slowDropLimit_ * stepFactor_, slowStep_);
}

int AutoFocusClimb::continueSlow() {
    if (travelUsedUp(travelLimitBeforeReturn_)) {
        lastValue_ = 0.0;
        return moveToBack();
    }
    return startMove(1, stepFactor_, slowStep_);
}

bool AutoFocusClimb::travelUsedUp(int travelLimit) const {
    return std::abs(position_) > travelLimit || limitReached_;
}

int AutoFocusClimb::startMove(int dir, int k, int step) {
    ++moveCounter_;
    direction_ *= dir;
    const int move = step * (direction_ * k);
    position_ += move;
    limitReached_ = false;
    return move;
}

int AutoFocusClimb::moveToBack() {
    int move = -position_;
    if (backMoveCounter_ > 1) {
        move -= lastBackMove_;
    }
    position_ = 0;
    direction_ = -direction_;
    ++backMoveCounter_;
    ++moveCounter_;
    lastBackMove_ = move;
    limitReached_ = false;
    return move;
}

bool AutoFocusClimb::isEndAdjust() const {
    return moveCounter_ > moveLimit_ || backMoveCounter_ > backMoveLimit_ ||
           reversalCounter_ > kSlowReversalLimit;
}

// Where the climb stood is where the motor stopped. Without this the climb would count the
// steps a closed switch refused as made: its returns would overshoot where it began, and its
// last move would miss the best position by as much. Returning at the switch, as at the end of
// its travel limit, keeps a climb that started at an end from ordering blocked moves until it
// runs out of them.
void AutoFocusClimb::limitReached(int shortfall) {
    position_ -= shortfall;
    limitReached_ = true;
}
