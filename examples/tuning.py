"""How a register changes a picture: a photograph becomes a mosaic, the block makes a picture of it with eight values of
the register, and each is compared with the photograph. Needs scikit-image and matplotlib.

    python3 examples/tuning.py --register cmoire_strth -o tuning.png
"""

import argparse

import matplotlib
import numpy as np
import skimage.data
from cfa_cmodel import Block, mosaic
from skimage.metrics import peak_signal_noise_ratio, structural_similarity

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402 (behind the choice of the back end)

FULL = 4095  # 12 bits
PHOTOGRAPHS = ("astronaut", "chelsea", "coffee")  # those that come with scikit-image


def photograph(name):
    """With samples of 12 bits, taken as linear."""
    return (getattr(skimage.data, name)().astype(np.uint32) * FULL // 255).astype(np.uint16)


def sweep(raw, name, count=8):
    """Pictures by the value of the register, from its least to its largest."""
    register, block = getattr(Block, name), Block(bayer="rggb")
    pictures = {}
    for value in np.unique(np.linspace(register.min, register.max, count).round().astype(int)):
        setattr(block, name, value)
        pictures[int(value)] = block(raw).rgb
    return pictures


def qualities(picture, wanted):
    """Colour PSNR in dB, over all three channels, and SSIM, the mean of theirs."""
    psnr = peak_signal_noise_ratio(wanted, picture, data_range=FULL)
    return psnr, structural_similarity(wanted, picture, data_range=FULL, channel_axis=2)


def save_sheet(path, title, panels):
    """Panels side by side: (label, picture)."""
    figure, axes = pyplot.subplots(3, 3, figsize=(10, 10.6), layout="constrained")
    figure.suptitle(title)
    for axis in axes.flat:
        axis.axis("off")
    for axis, (label, picture) in zip(axes.flat, panels):
        axis.imshow(picture / FULL)
        axis.set_title(label, fontsize=10)
    figure.savefig(path, dpi=110)


def main():
    parser = argparse.ArgumentParser(description="Sweeps a register over eight values.")
    parser.add_argument("--register", default="cmoire_strth", help="as in Block's attributes (cmoire_strth)")
    parser.add_argument("--photograph", choices=PHOTOGRAPHS, default="chelsea")
    parser.add_argument("-o", "--output", default="tuning.png", help="the sheet (tuning.png)")
    options = parser.parse_args()
    register = getattr(Block, options.register, None)
    if not hasattr(register, "reset"):
        parser.error(f"no register '{options.register}'")

    wanted = photograph(options.photograph)
    height, width, _ = wanted.shape
    part = np.s_[height // 4 : height // 4 + 100, width // 4 : width // 4 + 100]
    panels = [("photograph", wanted[part])]
    print(f"{register.key}: {register.meaning}; {register.reset} at reset")
    for value, picture in sweep(mosaic(wanted, "rggb"), options.register).items():
        psnr, ssim = qualities(picture, wanted)
        print(f"{value:8}  colour PSNR {psnr:6.2f} dB  SSIM {ssim:.4f}")
        panels.append((f"{value}: {psnr:.2f} dB, {ssim:.4f}", picture[part]))
    save_sheet(options.output, register.key, panels)
    print(f"written: {options.output}")


if __name__ == "__main__":
    main()
