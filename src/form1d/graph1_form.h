#pragma once
// The one-dimensional form: several graphs over one sampling grid of N
// intervals (N+1 samples), shown in one plot window.

#include <array>
#include <memory>
#include <vector>

#include "app/form.h"

namespace keldo::form1d {

constexpr int kMinPoints = 64;
constexpr int kMaxPoints = 65536;
constexpr int kDefaultPoints = 1024;
constexpr int kSlack = 10;  // samples of slack after point N in every row

class Graph1Form final : public Form {
 public:
  explicit Graph1Form(Frame& frame);

  // SetPoints: drops every graph and changes N; nothing happens when n is N.
  void SetPoints(int n);
  // Ticks the points item that matches n and sets log2 of N.
  void ChangePointsMenu(int n);
  int GraphCount() const { return graphCount_; }
  int Log2Points() const { return log2N_; }

  int Points() const override { return n_; }
  std::array<double, 4> Window() const override { return {winLeft_, winRight_, winBottom_, winTop_}; }
  std::vector<GraphSummary> Graphs() const override;

 private:
  void BuildControls();
  void Reallocate();

  int n_ = kDefaultPoints;
  int log2N_ = 10;
  int graphCount_ = 0;
  int capacity_ = 4;
  std::vector<double> values_;  // (capacity+1) rows of N+1+kSlack samples
  std::vector<double> a_, b_, h_, peak_;
  double winLeft_ = -0.5, winRight_ = 0.5, winBottom_ = 0.0, winTop_ = 0.0;
  double intervalLeft_ = -0.5, intervalRight_ = 0.5;
  double step_ = 1.0 / kDefaultPoints;
  int tracePosition_ = kDefaultPoints / 2;
};

std::unique_ptr<Form> MakeGraph1Form(Frame& frame);

}  // namespace keldo::form1d
