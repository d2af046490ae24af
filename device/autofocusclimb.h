#pragma once

#include <QObject>

// The autofocus's decisions: a two-stage hill climb that turns each new sharpness sample into
// the next lens move. Pure: it keeps its own count of where the lens is and moves nothing.
//
// Positions and moves are climb units of 16 motor steps. The fast stage moves 32 units at a
// time until the sharpness passes 37 (or it has reversed more than twice); the slow stage then
// moves 3 units at a time until it has passed the peak while moving back (direction -1), and
// its last move brings the lens to the best position it saw.
class AutoFocusClimb : public QObject {
    Q_OBJECT

public:
    explicit AutoFocusClimb(QObject* parent = nullptr) : QObject(parent) {}

    void reset();
    // The next move for the sample `value` (signed units; 0: no move).
    int adjust(double value);
    int adjustFast(double value);
    int adjustSlow(double value);
    // Orders a move of `step` x (direction x k) after multiplying the direction by `dir`.
    int startMove(int dir, int k, int step);
    // The move back to where the climb began, reversing the direction.
    int moveToBack();

    // The autofocus has used up its moves, returns or reversals.
    bool isEndAdjust() const;
    // The slow stage has passed the peak: the last move went to the best position.
    bool isMax() const { return peakFound_; }
    // 0 when the fast stage decided the last move, 1 the slow stage.
    int speedStatus() const { return speedStatus_; }

    // A limit switch ended the last move `shortfall` units (signed, as the move) short of where
    // it was ordered. The climb's position becomes the one the motor really reached, and the
    // travel counts as used up: where the climb would next move on, it returns instead.
    void limitReached(int shortfall);

private:
    int continueFast();
    int continueSlow();
    bool travelUsedUp(int travelLimit) const;

    int stage_ = 0;
    double lastValue_ = 0.0;
    double bestValue_ = 0.0;
    int lastRisePosition_ = 0;
    int bestPosition_ = 0;
    int fastStep_ = 32;
    int slowStep_ = 3;
    int fastThreshold_ = 37;
    int fastDropLimit_ = 3;
    int slowDropLimit_ = 2;
    int dropCounter_ = 0;
    int stepFactor_ = 1;
    int reversalCounter_ = 0;
    int backMoveCounter_ = 0;
    int direction_ = 1;
    int moveCounter_ = 0;
    int position_ = 0;
    int moveLimit_ = 100;
    int travelLimitBeforeReturn_ = 1000;
    int travelLimitAfterReturn_ = 2000;
    int fastReversalLimit_ = 2;
    int backMoveLimit_ = 3;
    bool peakFound_ = false;
    int lastBackMove_ = 0;
    int speedStatus_ = 0;
    bool limitReached_ = false;  // a limit switch ended the last move
};
