#pragma once

// ZEqualizerGraph: the equalizer drawn over the spectrum of the reverberation. A log
// frequency axis from 20 Hz to 20 kHz; the response of the filters as they run (accent)
// on a gain scale of +-24 dB, over the analyser's spectrum (muted, 0 to -96 dB full
// scale on the same lines). Five handles: the low and high cut move sideways only, as
// host gestures; the three bands move in frequency and gain, the wheel sets their Q and
// a double click switches them on or off (a band that is off is drawn hollow). While the
// graph exists, the effect keeps the reverberation for its analyser.

#include "editor/equalizer_model.h"
#include "editor/spectrum_analyser.h"
#include "ui/view.h"

#include <memory>
#include <vector>

namespace halvern {

class ZEqualizerGraph : public ZView {
public:
    static constexpr double kSpectrumTopDb = 0.0;
    static constexpr double kSpectrumBottomDb = -96.0;

    explicit ZEqualizerGraph(std::shared_ptr<ZEqualizerModel> model);
    ~ZEqualizerGraph() override;

    const ZSpectrumAnalyser& analyser() const { return analyser_; }

    // Where things are, in root coordinates.
    ZRect PlotRect() const;
    double XOf(double hertz) const;
    double HertzAt(double x) const;
    double YOfGain(double db) const;
    double GainAt(double y) const;
    ZPoint BandHandle(int band) const;
    ZPoint CutHandle(ZEqualizerModel::Cut cut) const;

    std::string HelpText() const override;
    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    void OnMouseDrag(const ZMouseEvent& event) override;
    void OnMouseUp(const ZMouseEvent& event) override;
    void OnCaptureLost() override;
    void OnMouseMove(const ZMouseEvent& event) override;
    void OnMouseLeave() override;
    bool OnWheel(const ZWheelEvent& event) override;
    ZCursor Cursor() const override;
    // Takes the newest reverberation into the analyser; repaints when it or the cuts moved.
    void Refresh() override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    enum class Kind { None, Band, Cut };
    struct Handle {
        Kind kind = Kind::None;
        int index = 0; // the band, or 0 for the low cut and 1 for the high cut
        bool operator==(const Handle&) const = default;
    };

    static ZEqualizerModel::Cut cutOf(const Handle& handle);
    ZPoint position(const Handle& handle) const;
    Handle hitTest(ZPoint point) const;
    void moveTo(ZPoint pointer);
    void endDrag();
    void doubleClick(const Handle& handle);
    double spectrumY(double db) const;
    std::string describe(const Handle& handle) const;

    void paintGrid(ZCanvas& canvas, const ZRect& plot) const;
    void paintSpectrum(ZCanvas& canvas, const ZRect& plot) const;
    void paintResponse(ZCanvas& canvas, const ZRect& plot) const;
    void paintHandles(ZCanvas& canvas) const;
    void paintReadout(ZCanvas& canvas, const ZRect& plot) const;

    std::shared_ptr<ZEqualizerModel> model_;
    ZSpectrumAnalyser analyser_;
    std::vector<float> incoming_;
    double shownCuts_[2] = {-1.0, -1.0};
    Handle drag_;
    Handle hover_;
    ZPoint grabOffset_;  // from the pointer to the dragged handle
    ZPoint pressedAt_;
    bool moved_ = false; // a press that never moves changes nothing
};

} // namespace halvern
