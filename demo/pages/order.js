// The photo page works without this: every button is a submit button. Here the same happens without a round trip.
(() => {
  const form = document.getElementById('photo-form');
  if (!form) return;
  const highest = 99;
  const input = tile => tile.querySelector('input');
  const copies = tile => Math.min(highest, Math.max(0, parseInt(input(tile).value, 10) || 0));

  const show = () => {
    let count = 0;
    let cents = 0;
    for (const tile of form.querySelectorAll('.tile')) {
      const wanted = copies(tile);
      count += wanted;
      cents += wanted * Number(tile.dataset.price);
      tile.classList.toggle('is-chosen', wanted > 0);
      tile.querySelector('.picture').setAttribute('aria-pressed', String(wanted > 0));
    }
    document.getElementById('count').textContent =
      count === 0 ? 'Nothing chosen yet' : count === 1 ? '1 print' : count + ' prints';
    document.getElementById('total').textContent = '€' + (cents / 100).toFixed(2);
    if (count > 0) document.getElementById('notice')?.remove();
  };

  form.addEventListener('click', event => {
    const button = event.target.closest('button[name]');
    if (!button) return;
    event.preventDefault();
    const tile = button.closest('.tile');
    const now = copies(tile);
    const next = { plus: now + 1, minus: now - 1, toggle: now > 0 ? 0 : 1 }[button.name];
    input(tile).value = Math.min(highest, Math.max(0, next));
    show();
  });
  form.addEventListener('input', show);
  form.addEventListener('focusin', event => { if (event.target.matches('.stepper input')) event.target.select(); });
  form.addEventListener('focusout', event => {
    if (event.target.matches('.stepper input')) event.target.value = copies(event.target.closest('.tile'));
  });
  // A page that comes back from history has the counts that it was left with.
  addEventListener('pageshow', show);
})();
