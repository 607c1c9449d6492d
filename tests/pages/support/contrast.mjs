// WCAG contrast of every visible text on a page against what is painted behind it.
// Runs inside the page; returns the texts that fall short.
export function lowContrastTexts() {
  function parse(colour) {
    const m = colour.match(/rgba?\(([^)]+)\)/);
    if (!m) return null;
    const parts = m[1].split(/[,\s/]+/).filter(Boolean).map(Number);
    return { r: parts[0], g: parts[1], b: parts[2], a: parts.length > 3 ? parts[3] : 1 };
  }
  function over(top, bottom) {
    const a = top.a;
    return { r: top.r * a + bottom.r * (1 - a), g: top.g * a + bottom.g * (1 - a), b: top.b * a + bottom.b * (1 - a), a: 1 };
  }
  function luminance(c) {
    const lin = (v) => { const s = v / 255; return s <= 0.03928 ? s / 12.92 : ((s + 0.055) / 1.055) ** 2.4; };
    return 0.2126 * lin(c.r) + 0.7152 * lin(c.g) + 0.0722 * lin(c.b);
  }
  function ratio(a, b) {
    const [hi, lo] = [luminance(a), luminance(b)].sort((x, y) => y - x);
    return (hi + 0.05) / (lo + 0.05);
  }
  // The colours behind an element: its own and its ancestors' backgrounds composed; a
  // gradient contributes each of its stops, and the worst of them counts.
  function backdrops(el) {
    const layers = [];
    for (let node = el; node && node.nodeType === 1; node = node.parentElement) {
      const style = getComputedStyle(node);
      const stops = (style.backgroundImage.match(/rgba?\([^)]+\)/g) || []).map(parse);
      const colour = parse(style.backgroundColor);
      layers.push({ stops, colour });
      if ((colour && colour.a === 1) || stops.some((s) => s.a === 1)) break;
    }
    let results = [{ r: 255, g: 255, b: 255, a: 1 }];
    for (let i = layers.length - 1; i >= 0; i -= 1) {
      const { stops, colour } = layers[i];
      if (colour && colour.a > 0) results = results.map((r) => over(colour, r));
      if (stops.length) results = stops.flatMap((s) => results.map((r) => over(s, r)));
    }
    return results;
  }
  function opacity(el) {
    let o = 1;
    for (let node = el; node && node.nodeType === 1; node = node.parentElement) o *= Number(getComputedStyle(node).opacity);
    return o;
  }
  const failures = [];
  document.querySelectorAll('body *').forEach((el) => {
    const own = Array.from(el.childNodes).some((n) => n.nodeType === 3 && n.textContent.trim());
    if (!own || el.closest('.sr-only, [hidden], svg') || el.getClientRects().length === 0) return;
    const style = getComputedStyle(el);
    if (style.visibility === 'hidden') return;
    const size = parseFloat(style.fontSize);
    const bold = Number(style.fontWeight) >= 700;
    const needed = size >= 24 || (size >= 18.66 && bold) ? 3 : 4.5;
    let fg = parse(style.color);
    const alpha = opacity(el);
    const worst = Math.min(...backdrops(el).map((bg) => ratio(over({ ...fg, a: fg.a * alpha }, bg), bg)));
    if (worst < needed) failures.push(`${el.id || el.className || el.tagName} "${el.textContent.trim().slice(0, 30)}" ${worst.toFixed(2)} < ${needed}`);
  });
  return failures;
}
