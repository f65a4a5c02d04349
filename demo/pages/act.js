// Acts as the customer, from the landing page to the end of the order, slowly enough for a watcher. A person who
// touches the page takes over.
(() => {
  const stay = 1200;
  let takenOver = false;
  addEventListener('pointerdown', event => { if (event.isTrusted) takenOver = true; }, true);
  const until = moment => new Promise(resolve => setTimeout(resolve, Math.max(0, moment - performance.now())));

  const press = async (element, moment) => {
    await until(moment - 260);
    if (takenOver) return;
    element.scrollIntoView({ block: 'nearest' });
    const box = element.getBoundingClientRect();
    const finger = document.createElement('span');
    finger.className = 'finger';
    finger.style.left = box.left + box.width / 2 + 'px';
    finger.style.top = box.top + box.height / 2 + 'px';
    document.body.append(finger);
    setTimeout(() => finger.remove(), 520);
    await until(moment);
    if (!takenOver) element.click();
  };

  const write = async (id, text, begin, end) => {
    const field = document.getElementById(id);
    await until(begin);
    if (takenOver) return;
    field.focus();
    for (let length = 1; length <= text.length; ++length) {
      await until(begin + (end - begin) * length / text.length);
      if (takenOver) return;
      field.value = text.slice(0, length);
    }
  };

  const acts = {
    landing: async start => { await press(document.getElementById('start-order'), start + stay); },
    photos: async start => {
      const tile = number => document.querySelectorAll('.tile')[number];
      if (!tile(0).classList.contains('is-chosen')) {
        await press(tile(0).querySelector('.picture'), start + 400);
        await press(tile(1).querySelector('[name=plus]'), start + 700);
        await press(tile(1).querySelector('[name=plus]'), start + 900);
      }
      await press(document.getElementById('continue'), start + stay);
    },
    details: async start => {
      await write('customer-name', 'Clara Lindqvist', start + 150, start + 450);
      await write('customer-email', 'clara@example.com', start + 450, start + 700);
      await write('customer-phone', '+49 40 123456', start + 700, start + 900);
      await press(document.getElementById('continue'), start + stay);
    },
    review: async start => { await press(document.getElementById('place-order'), start + stay); },
    // The order's code is to be read.
    confirmation: async start => { await press(document.getElementById('finish'), start + 2 * stay); },
  };

  const act = acts[document.body.dataset.page];
  if (act) addEventListener('load', () => act(performance.now()));
})();
