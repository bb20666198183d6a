#pragma once

/// Aligned memory, float planes and the plane mathematics of the deconvolution and object separator
/// filters.
///
/// A plane is given by the address of its first pixel, the distance between two rows in bytes (its
/// step) and the size of the region to work on. No byte outside that region is read or written.
/// Every kernel returns a KernelStatus, checks all arguments before it writes anything, and gives
/// bit-identical results in all of its processor-specific builds.
namespace numeric {

enum KernelStatus : int {
    Success = 0,
    BadArgument = -5,      ///< a numeric argument, norm or flag out of range
    BadSize = -6,          ///< a width, height, kernel or region size out of range
    NullPointer = -8,      ///< a required pointer is null
    NoMemory = -9,         ///< an allocation failed
    BadStep = -14,         ///< a row step is smaller than the row
    BadOrder = -15,        ///< the transform does not support this order
    UnalignedStep = -108,  ///< a float plane's row step is not a multiple of 4 bytes
};

// --- Memory -------------------------------------------------------------------------------------

/// byteCount bytes from the heap, aligned to 32 bytes, contents undefined. Null when byteCount is
/// 0 or less, so large that the request would overflow an int, or when the heap has no room. The
/// caller owns the block and returns it with freeAligned.
void* allocAligned(int byteCount);

/// Returns a block of allocAligned to the heap; null is ignored.
void freeAligned(void* block);

/// A plane of width x height floats, contents undefined, whose rows start on 32-byte boundaries.
/// *step receives the row size in bytes, raised to the next multiple of 32. Null, with *step 0
/// (if there is a step to write to), when width or height is below 1, the plane would exceed the
/// int range, or memory is short. The caller owns the plane and returns it with freeFloatImage.
float* allocFloatImage(int width, int height, int* step);

/// Returns a plane of allocFloatImage to the heap; null is ignored.
void freeFloatImage(void* image);

// --- Processor variants -------------------------------------------------------------------------

/// Sets the variant of a processor code, process-wide: the slot (0 to 5) of every kernel's table
/// that runs from now on. Returns 0, or 21 for an unknown code, which changes nothing. Not
/// synchronised: call it before any kernel runs. Nothing in the library calls it, so slot 0 runs,
/// which takes the best instruction set of the processor it finds itself on.
int selectVariant(int processorCode);

/// The slot that kernels run, 0 in a fresh process.
int variantIndex();

/// The level (0, 1 or 2) that belongs to the selected processor code, 0 in a fresh process.
int variantLevel();

// --- Deconvolution ------------------------------------------------------------------------------

struct DeconvFFTState;
struct DeconvLRState;

/// What deconvFFT needs for one kernel and one transform size N = 2 to the power of fftOrder. *out
/// receives a state that the caller owns until deconvFFTFree; it is left alone on failure.
/// kernel: the point-spread function, kernelSize x kernelSize weights, row-major; it is copied.
/// threshold: of the filter and of deconvFFT; may be NaN.
/// The kernel is placed with its first element at the origin; weights whose magnitude is not
/// greater than the threshold are dropped. Of its spectrum H the real and the imaginary part are
/// each set to 0 where their magnitude is below the threshold. The filter is 1 / H where one of
/// the two is greater than the threshold in magnitude, and 1 elsewhere.
/// Errors, in this order: a null pointer; kernelSize below 1 or above N (BadSize); a threshold
/// below 0 (BadArgument); an order below 0 or above 30 (BadOrder); no memory, which includes every
/// order above 13, whose arrays would exceed the int range (NoMemory).
KernelStatus deconvFFTInit(DeconvFFTState** out, const float* kernel, int kernelSize, int fftOrder,
                           float threshold);

/// Deconvolution of a region of floats in the frequency domain. The region is placed at row and
/// column o = kernelSize - 1 - (kernelSize - 1) / 2 of N x N zeros, with a margin of kernelSize - 1
/// rows and columns in all that damps what the circular convolution makes of the region's borders
/// (weighted copies of the nearest pixels). Its spectrum is multiplied by the state's filter, and
/// dst receives the real part of the result from the origin on, where its magnitude is greater
/// than the threshold, else 0. One NaN or infinity in the region makes all of dst 0.
/// dst may be src itself, but must not overlap it otherwise.
/// Steps are in bytes. A state serves one call at a time; nothing is allocated.
/// Errors, in this order: a null pointer; width or height below 1, or above N - kernelSize + 1
/// (BadSize); a step smaller than the row; a step that is not a multiple of 4.
/// Inverse filtering: Gonzalez & Woods, Digital Image Processing. Transforms: Cooley & Tukey 1965.
KernelStatus deconvFFT(const float* src, int srcStep, float* dst, int dstStep, int roiWidth,
                       int roiHeight, DeconvFFTState* state);

/// Frees a state. Error: a null pointer.
KernelStatus deconvFFTFree(DeconvFFTState* state);

/// What deconvLR needs for one kernel and for regions up to a size. *out receives a state that the
/// caller owns until deconvLRFree; it is left alone on failure.
/// kernel: the point-spread function, kernelSize x kernelSize weights, row-major; it is copied.
/// maxWidth, maxHeight: the largest region plus kernelSize - 1. threshold: of deconvLR; may be NaN.
/// Errors, in this order: a null pointer; a size below 1, or a kernel larger than the maximum in
/// either direction (BadSize); a threshold below 0 (BadArgument); no memory, or sizes whose arrays
/// would exceed the int range (NoMemory).
KernelStatus deconvLRInit(DeconvLRState** out, const float* kernel, int kernelSize, int maxWidth,
                          int maxHeight, float threshold);

/// Lucy-Richardson deconvolution of a region of floats. Starting from the region itself with a
/// margin of kernelSize - 1 rows and columns, the estimate e of the observation o becomes in every
/// iteration
///     e * (transposed kernel (*) (o / (kernel (*) e)))
/// where (*) is convolution about the anchor a = (kernelSize - 1) / 2, zeros outside: the weight at
/// (i, j) goes to the pixel i - a rows and j - a columns before the result. A ratio is 0 where the
/// magnitude of the denominator is at most the threshold, and the estimate becomes 0 where its own
/// or the correction's magnitude is at most 1.1754943e-15. The second convolution takes the kernel
/// transposed, not rotated, which is the same for a kernel with the symmetries of a Gaussian.
/// dst receives the estimate where its magnitude is greater than the threshold, else 0. It may be
/// src itself, but must not overlap it otherwise.
/// Steps are in bytes. A state serves one call at a time; nothing is allocated.
/// Errors, in this order: a null pointer; width or height below 1, or too large for the state
/// (BadSize); a step smaller than the row; a step that is not a multiple of 4; iterations below 1
/// (BadArgument).
/// Richardson 1972, Lucy 1974.
KernelStatus deconvLR(const float* src, int srcStep, float* dst, int dstStep, int roiWidth,
                      int roiHeight, int iterations, DeconvLRState* state);

/// Frees a state. Error: a null pointer.
KernelStatus deconvLRFree(DeconvLRState* state);

// --- Distance transform -------------------------------------------------------------------------

/// *size receives the bytes of scratch that distanceTransform needs: 24 times the longer side,
/// raised to a multiple of 4, plus 56.
/// Errors, in this order: NullPointer; BadSize: width or height below 1, or a scratch beyond the
/// int range.
KernelStatus distanceTransformScratchSize(int width, int height, int* size);

/// The exact Euclidean distance, in pixels, from each pixel to the nearest zero pixel.
/// src: bytes, width x height. dst: floats of the same size; must not overlap src.
/// scratch: distanceTransformScratchSize() bytes of any alignment, contents irrelevant before and
/// after; the caller keeps it from call to call. Nothing is allocated.
/// Distances are correctly rounded where their square is below 2^24, elsewhere within one unit in
/// the last place. Without any zero pixel every result is the square root of the largest float.
/// Errors, in this order: NullPointer: src, dst or scratch; BadSize: width or height below 1;
/// BadStep: srcStep below width, or dstStep below 4 * width; UnalignedStep: dstStep.
/// Columns first, then rows, on squared distances as in Felzenszwalb and Huttenlocher, "Distance
/// transforms of sampled functions", 2012. Instead of an envelope of parabolas the rows search
/// columns side by side, near ones in order of distance, far ones between the nearest columns of
/// neighbouring pixels, which are in order (Aggarwal et al., "Geometric applications of a matrix
/// searching algorithm", 1987).
KernelStatus distanceTransform(const unsigned char* src, int srcStep, float* dst, int dstStep,
                               int width, int height, unsigned char* scratch);

// --- Segmentation -------------------------------------------------------------------------------

/// The bytes of scratch that labelSeeds needs for this size. Errors, in this order: size is null;
/// width or height below 1, or so large that the result would overflow an int.
KernelStatus labelSeedsScratchSize(int width, int height, int* size);

/// Labels the connected areas of non-zero pixels, in place: each pixel becomes the label of its
/// area, zero pixels stay.
///
/// marker: 8-bit, width x height, step in bytes. connectivity: 0 joins pixels across sides and
/// corners (chessboard, 8 neighbours), 1 across sides only (city block, 4 neighbours). scratch:
/// labelSeedsScratchSize() bytes at any address, contents irrelevant. *count receives the number
/// of areas.
///
/// Areas are numbered in raster order of their first pixels, starting at smallestLabel. When there
/// are more areas than labels up to largestLabel, labels are used again, in such a way that areas
/// with the same label lie as far apart as the density of areas allows: see label_reuse.h.
///
/// Errors, in this order: a null pointer; width or height below 1 or too large; a step smaller than
/// the row; a connectivity other than 0 and 1, or labels not 1 <= smallest <= largest <= 255.
///
/// Runs joined by union-find on bit masks; with 8 neighbours two rows at a time.
KernelStatus labelSeeds(unsigned char* marker, int step, int width, int height, int smallestLabel,
                        int largestLabel, int connectivity, int* count, unsigned char* scratch);

/// *size receives the bytes of scratch that watershed needs: the larger of
/// (2h + 2) W + 4 W h + h + 66 (W: width raised to a multiple of 32) and
/// 12 w h + 36 + (w + 2)(h + 2).
/// Errors, in this order: size is null; width or height below 1, or so large that the result would
/// overflow an int.
KernelStatus watershedScratchSize(int width, int height, int* size);

/// Marker-driven watershed: a priority flood that grows the labels of marker over relief until
/// every pixel carries one (all stay 0 when there is no seed at all).
///
/// relief, marker: 8-bit, width x height, steps in bytes; they must not overlap. marker holds the
/// seeds, labels 1 to 255, and 0 elsewhere; the result replaces it. scratch: watershedScratchSize()
/// bytes at any address, contents irrelevant. Nothing is allocated.
///
/// The flood rises through the levels of the relief. A seed takes part from its own level on, not
/// before. At each level it covers the pixels that are not higher and can be reached, in the order
/// of their way from what was covered before, each taking the label of the neighbour it is reached
/// from; of equal paths the smaller label wins, so that nothing depends on the order of scanning.
///
/// norm and flags say how long a way is: with flag 1 the number of steps, with flag 2 (exactly one
/// of the two is given) the distance in the norm. 0 is the chessboard (8 neighbours), 1 the city
/// block (4 neighbours), where both are the same; 2 and 3 are Euclidean, measured by fast marching
/// (arrival.h), and step to 8 neighbours.
/// Flag 64 or 128, at most one, draws borders over 4 or 8 neighbours: a pixel becomes 255 when such
/// a neighbour carries a greater label, which keeps the lines off objects that meet a background of
/// the smallest label.
///
/// Errors, in this order: a null pointer; width or height below 1 or too large; a step smaller than
/// the row; an unknown norm, or flags other than those named.
///
/// Meyer 1991 for the flood, with the order of seeds as above; Sethian 1996 for the distances.
KernelStatus watershed(const unsigned char* relief, int reliefStep, unsigned char* marker,
                       int markerStep, int width, int height, int norm, int flags,
                       unsigned char* scratch);

/// *size receives the bytes of scratch that peakStep needs: 16 * width + height + 130.
/// Errors, in this order: NullPointer; BadSize: width or height below 1, or a scratch beyond the
/// int range.
KernelStatus peakStepScratchSize(int width, int height, int* size);

/// Greyscale reconstruction by dilation: plane, first lowered to bound where it exceeds it, grows
/// to the largest plane that is reachable by taking maxima over neighbours without exceeding bound.
/// bound, plane: floats, width x height each; they must not overlap. The result replaces plane.
/// mode: 0, a pixel's neighbours are the 8 around it (chessboard); 1, the 4 beside it (city block).
/// scratch: peakStepScratchSize() bytes of any alignment, contents irrelevant before and after; the
/// caller keeps it from call to call. Nothing is allocated.
/// Infinities are ordinary values. A pixel of plane that is NaN counts as minus infinity. Where
/// bound is NaN, the pixel of plane keeps its value, which its neighbours may still take. A zero of
/// the result is always +0.
/// Errors, in this order: NullPointer: bound, plane or scratch; BadSize: width or height below 1;
/// BadStep: a step below 4 * width; UnalignedStep; BadArgument: any other mode.
/// Vincent, "Morphological grayscale reconstruction in image analysis", 1993: sweeps over rows, and
/// a queue for what rises behind them, here of row segments and with a limit per sweep, so that no
/// area is flooded again for each of many inflows.
KernelStatus peakStep(const float* bound, int boundStep, float* plane, int planeStep, int width,
                      int height, unsigned char* scratch, int mode);

// --- Element-wise operations --------------------------------------------------------------------
//
// Errors, in this order: a null pointer; width or height below 1; a step smaller than the row; on
// float planes a step that is not a multiple of 4. Two planes may be one and the same, but must
// not overlap otherwise.

/// Pixels below level become value; the others stay, and so does NaN.
KernelStatus thresholdFloat(float* data, int step, int width, int height, float level, float value);

/// dst = src - scalar.
KernelStatus subtractScalar(const float* src, int srcStep, float scalar, float* dst, int dstStep,
                            int width, int height);

/// srcDst = srcDst - src.
KernelStatus subtract(const float* src, int srcStep, float* srcDst, int srcDstStep, int width,
                      int height);

/// *max receives the largest pixel. NaN pixels are passed over (minus infinity if there is no
/// other pixel), and a largest value of zero is always +0.
KernelStatus maximum(const float* data, int step, int width, int height, float* max);

/// srcDst = srcDst OR src.
KernelStatus bitwiseOr(const unsigned char* src, int srcStep, unsigned char* srcDst, int srcDstStep,
                       int width, int height);

/// Pixels above level become value. A level outside 0 to 255 compares as the number it is; a value
/// outside is brought to the nearer end.
KernelStatus thresholdAbove(unsigned char* data, int step, int width, int height, int level,
                            int value);

/// Pixels below level become value; level and value as for thresholdAbove.
KernelStatus thresholdBelow(unsigned char* data, int step, int width, int height, int level,
                            int value);

/// Pixels below lowerLevel become lowerValue, of the others those above upperLevel become
/// upperValue; levels and values as for thresholdAbove.
KernelStatus thresholdBothSides(unsigned char* data, int step, int width, int height,
                                int lowerLevel, int lowerValue, int upperLevel, int upperValue);

}  // namespace numeric
