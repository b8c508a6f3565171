// A peer: OpenCV's edge-aware demosaic of a 16-bit BGGR mosaic, one thread, as its users write it.
// opencv_bulk is the same with leaner file handling.
//
// Usage: opencv_plain MOSAIC OUT
#include <cstdio>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

int main(int argc, char **argv) {
    if (argc != 3) {
        std::fprintf(stderr, "Usage: %s MOSAIC OUT\n", argv[0]);
        return 1;
    }
    cv::setNumThreads(1);
    const cv::Mat mosaic = cv::imread(argv[1], cv::IMREAD_UNCHANGED);
    if (mosaic.type() != CV_16UC1) {
        std::fprintf(stderr, "%s: not a 16-bit P5 picture\n", argv[1]);
        return 1;
    }
    cv::Mat bgr;
    cv::cvtColor(mosaic, bgr,
                 cv::COLOR_BayerRG2BGR_EA); // named there by the second row's second and third site
    return cv::imwrite(argv[2], bgr) ? 0 : 1;
}
